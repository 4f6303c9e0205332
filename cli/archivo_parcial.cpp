#include "cli/archivo_parcial.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fmt/format.h>

#include "cli/copia_en_disco.h"
#include "link/protocolo.h"
#include "platform/motivos.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kModo = 0666;
constexpr int kAbrir = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr std::string_view kParcial = ".parcial";

bool mismo(int descriptor, const fs::path& ruta) {
    struct stat abierto {};
    struct stat nombrado {};
    return ::fstat(descriptor, &abierto) == 0 && ::lstat(ruta.c_str(), &nombrado) == 0 &&
           abierto.st_dev == nombrado.st_dev && abierto.st_ino == nombrado.st_ino;
}

// 0, also where the file system has no locks; or why not.
int bloquear(int descriptor) {
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return 0;
    return EBUSY;
}

void exigirQueNadieLoEscriba(const fs::path& ruta) {
    const Descriptor suyo(::open(ruta.c_str(), kAbrir));
    const int motivo = suyo() < 0 ? 0 : bloquear(suyo());
    if (motivo != 0) throw noGuardado(ruta, motivoEscritura(motivo));
}

fs::path rutaParcial(const Destino& destino) {
    return conSufijo(destino.ruta, kParcial);
}

[[noreturn]] void rehusar(const fs::path& ruta, std::string_view motivo) {
    throw noGuardado(ruta, fmt::format("{}. Quítelo de ahí, o dé otro nombre al archivo base", motivo));
}

void exigirArchivo(const fs::path& ruta, const struct stat& datos) {
    if (S_ISLNK(datos.st_mode)) rehusar(ruta, "es un enlace");
    if (S_ISDIR(datos.st_mode)) rehusar(ruta, motivoSinConsejo(EISDIR));
    if (!S_ISREG(datos.st_mode)) rehusar(ruta, kNoEsArchivoNormal);
}

}  // namespace

void ArchivoParcial::revisar(const Destino& destino, const EntornoConsola& entorno) {
    ArchivosLeidos parcial;
    parcial.agregar(rutaParcial(destino));
    parcial.exigirOtro(entorno.salida, "la salida de la orden");
    parcial.exigirOtro(entorno.errores, "lo que la orden avisa");
    exigirSitio(destino);
    exigirQueNadieLoEscriba(rutaParcial(destino));
}

void ArchivoParcial::exigirSitio(const Destino& destino) {
    const auto ruta = rutaParcial(destino);
    struct stat datos {};
    if (::lstat(ruta.c_str(), &datos) != 0) return;
    exigirArchivo(ruta, datos);
    if (::faccessat(AT_FDCWD, ruta.c_str(), R_OK | W_OK, AT_EACCESS) == 0) return;
    const int motivo = errno;
    constexpr mode_t kDeSuDueno = S_IRUSR | S_IWUSR;
    if (motivo == EACCES && datos.st_uid == ::geteuid() && (datos.st_mode & kDeSuDueno) != kDeSuDueno)
        throw noGuardado(ruta,
                         "sus permisos no dejan leerlo y escribirlo ni a su dueño. Déselos con chmod u+rw, o "
                         "dé otro nombre al archivo base");
    rehusar(ruta, motivoSinConsejo(motivo));
}

ArchivoParcial::ArchivoParcial(Destino destino, Coinciden coinciden)
    : destino_(std::move(destino)), ruta_(rutaParcial(destino_)), coinciden_(std::move(coinciden)) {
    abrir();
    leer();
}

ArchivoParcial::~ArchivoParcial() {
    struct stat datos {};
    if (!colocado_ && hecho_ && descriptor_() >= 0 && ::fstat(descriptor_(), &datos) == 0 &&
        datos.st_size == 0 && mismo(descriptor_(), ruta_)) {
        ::unlink(ruta_.c_str());
    }
}

void ArchivoParcial::exigir(int motivo) const {
    if (motivo != 0) throw noGuardado(ruta_, motivoEscritura(motivo));
}

// Whoever held the lock may have given the file its final name, or put another in its place, meanwhile.
void ArchivoParcial::abrir() {
    do {
        exigirSitio(destino_);
        descriptor_ = Descriptor(::open(ruta_.c_str(), kAbrir | O_CREAT | O_EXCL, kModo));
        hecho_ = descriptor_() >= 0;
        const bool estaba = !hecho_ && errno == EEXIST;
        if (estaba) descriptor_ = Descriptor(::open(ruta_.c_str(), kAbrir));
        // Taken away between the two.
        if (estaba && descriptor_() < 0 && errno == ENOENT) continue;
        exigir(descriptor_() < 0 ? errno : 0);
        struct stat datos {};
        exigir(::fstat(descriptor_(), &datos) == 0 ? 0 : errno);
        exigirArchivo(ruta_, datos);
        exigir(conservarModo(descriptor_(), {}));
        exigir(bloquear(descriptor_()));
    } while (!mismo(descriptor_(), ruta_));
}

// Whatever its length: one byte more than an image holds cannot agree with any.
void ArchivoParcial::leer() {
    contenido_.resize(kBytesMemoria + 1);
    const auto n = ::pread(descriptor_(), contenido_.data(), contenido_.size(), 0);
    exigir(n < 0 ? errno : 0);
    contenido_.resize(static_cast<std::size_t>(n));
}

// A file that another program cut short would get zeroes in the place of what stood there.
bool ArchivoParcial::cortado() const {
    struct stat datos {};
    exigir(::fstat(descriptor_(), &datos) == 0 ? 0 : errno);
    return static_cast<std::size_t>(datos.st_size) < contenido_.size();
}

// Of the base file's name with "X.2Y", "X.3Y" and so on behind it, at first without a number. However long
// that name is, this one tells what it is.
fs::path ArchivoParcial::primerNombre(std::string_view delante, std::string_view detras,
                                      const std::function<bool(const fs::path&)>& sirve) const {
    for (int vez = 1;; ++vez) {
        const auto cual = vez == 1 ? std::string() : fmt::format(".{}", vez);
        auto ruta = conSufijo(destino_.ruta, fmt::format("{}{}{}", delante, cual, detras));
        if (sirve(ruta)) return ruta;
    }
}

// What another program put there stays, and what came goes on under the next free name.
void ArchivoParcial::dejarElNombre() {
    ruta_ = primerNombre("", kParcial, [](const fs::path& ruta) {
        struct stat datos {};
        return ::lstat(ruta.c_str(), &datos) != 0;
    });
}

// Without its name it would go with us, whatever was still to come.
void ArchivoParcial::reponer() {
    const bool suNombre = mismo(descriptor_(), ruta_);
    if (suNombre && !cortado()) return;
    const auto habia = contenido_;
    if (!suNombre) {
        contenido_.clear();
        dejarElNombre();
        static_cast<void>(revisarDestino(ruta_, {.nuevo = true}));
    }
    const bool propio = propio_;
    reemplazar(habia);
    propio_ = propio;
}

std::optional<fs::path> ArchivoParcial::recibir(Bytes imagen) {
    reponer();
    if (propio_ || contenido_.empty()) {
        agregar(imagen);
        return std::nullopt;
    }
    const auto desde = imagen.size() - kBytesBloque;
    std::optional<fs::path> aparte;
    if (desde < contenido_.size()) {
        const auto comun = std::min(kBytesBloque, contenido_.size() - desde);
        const auto antes = Bytes(contenido_).subspan(desde, comun);
        const bool cabe = contenido_.size() <= kBytesMemoria;
        if (!cabe || !coinciden_(desde, antes, imagen.subspan(desde, comun))) aparte = apartar();
    }
    if (aparte || imagen.size() > contenido_.size()) reemplazar(imagen);
    return aparte;
}

void ArchivoParcial::agregar(Bytes imagen) {
    const auto desde = imagen.size() - kBytesBloque;
    const auto n = ::pwrite(descriptor_(), imagen.data() + desde, kBytesBloque, static_cast<off_t>(desde));
    exigir(n < 0 ? errno : n == static_cast<ssize_t>(kBytesBloque) ? 0 : ENOSPC);
    contenido_.insert(contenido_.end(), imagen.begin() + static_cast<std::ptrdiff_t>(desde), imagen.end());
    propio_ = true;
}

// A new file takes the name, so that no moment finds blocks of two readings in it.
void ArchivoParcial::reemplazar(Bytes imagen) {
    ArchivoPendiente nuevo({.pedido = ruta_, .ruta = ruta_, .nuevo = contenido_.empty()});
    nuevo.escribir(imagen);
    if (!contenido_.empty()) nuevo.sincronizar();
    Descriptor descriptor(::fcntl(nuevo.descriptor(), F_DUPFD_CLOEXEC, 0));
    exigir(descriptor() < 0 ? errno : bloquear(descriptor()));
    nuevo.colocar();
    descriptor_ = std::move(descriptor);
    hecho_ = true;
    contenido_.assign(imagen.begin(), imagen.end());
    propio_ = true;
}

// Never over an earlier one.
fs::path ArchivoParcial::apartar() {
    int motivo = 0;
    auto aparte = primerNombre(kParcial, ".anterior", [&](const fs::path& ruta) {
        motivo = colocar(ruta_, {.pedido = ruta_, .ruta = ruta, .nuevo = true});
        return motivo != EEXIST;
    });
    exigir(motivo);
    contenido_.clear();
    return aparte;
}

void ArchivoParcial::terminar(Bytes imagen) {
    reponer();
    if (!std::ranges::equal(contenido_, imagen) || !contiene(ruta_, imagen)) reemplazar(imagen);
    exigir(conservarModo(descriptor_(), destino_));
    exigir(sincronizar(descriptor_()));
    if (const int motivo = colocar(ruta_, destino_))
        throw noGuardado(destino_.pedido, motivoEscritura(motivo));
    colocado_ = true;
    contenido_.clear();
    exigirNombre(destino_, sincronizarCarpeta(destino_.carpeta()));
    exigirEnDisco(destino_.pedido, imagen);
}

}  // namespace telvane
