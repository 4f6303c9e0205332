#include "platform/guardado.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include <fmt/format.h>

namespace telvane {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kPermisos = 07777;
constexpr mode_t kModoNuevo = 0666;

// Inner failure: the reason on its way to the one place that names the file.
struct Fallo {
    std::string motivo;
};

[[noreturn]] void fallar(int numero) {
    throw Fallo{motivoSistema(numero)};
}

void exigir(bool bien) {
    if (!bien) fallar(errno);
}

class Descriptor {
   public:
    explicit Descriptor(int numero) : numero_(numero) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (numero_ >= 0) ::close(numero_);
    }
    int operator()() const { return numero_; }
    // A delayed write may report its failure only here. After EINTR the descriptor is gone all the same.
    void cerrar() {
        const int resultado = ::close(numero_);
        numero_ = -1;
        exigir(resultado == 0 || errno == EINTR);
    }

   private:
    int numero_;
};

// Where a chain of symbolic links ends, whether or not something stands there.
fs::path seguirEnlaces(fs::path ruta) {
    constexpr int kMaximo = 40;
    for (int i = 0; i < kMaximo; ++i) {
        std::error_code error;
        if (fs::symlink_status(ruta, error).type() != fs::file_type::symlink) return ruta;
        const auto destino = fs::read_symlink(ruta, error);
        if (error) fallar(error.value());
        ruta = destino.is_absolute() ? destino : ruta.parent_path() / destino;
    }
    fallar(ELOOP);
}

mode_t modoSinDestino() {
    // The mask can only be read by setting it.
    const mode_t mascara = ::umask(0);
    ::umask(mascara);
    return kModoNuevo & ~mascara;
}

// The mode that the saved file is to have. A file that may not be written is not replaced either, although
// the folder's permission would allow it.
mode_t revisarDestino(const fs::path& destino) {
    struct stat datos {};
    if (::stat(destino.c_str(), &datos) != 0) {
        exigir(errno == ENOENT);
        return modoSinDestino();
    }
    if (S_ISDIR(datos.st_mode)) fallar(EISDIR);
    if (!S_ISREG(datos.st_mode)) throw Fallo{"no es un archivo normal"};
    exigir(::faccessat(AT_FDCWD, destino.c_str(), W_OK, AT_EACCESS) == 0);
    return datos.st_mode & kPermisos;
}

fs::path carpetaDe(const fs::path& ruta) {
    const auto carpeta = ruta.parent_path();
    return carpeta.empty() ? fs::path(".") : carpeta;
}

// ".<name>.XXXXXX", the name cut where the whole would be longer than a file name may be.
std::string plantillaTemporal(const fs::path& destino) {
    constexpr std::string_view kSufijo = ".XXXXXX";
    const auto nombre = destino.filename().string().substr(0, NAME_MAX - kSufijo.size() - 1);
    return (carpetaDe(destino) / ('.' + nombre + std::string(kSufijo))).string();
}

void escribirTodo(int descriptor, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto n = ::write(descriptor, bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR) continue;
        exigir(n >= 0);
        bytes = bytes.subspan(static_cast<std::size_t>(n));
    }
}

void sincronizar(int descriptor) {
    int resultado = 0;
    do {
        resultado = ::fsync(descriptor);
    } while (resultado != 0 && errno == EINTR);
    exigir(resultado == 0);
}

// Makes the new name durable. By now the file is saved, so a folder that cannot be read or a file system that
// does not flush folders is no failure of the save.
void sincronizarCarpeta(const fs::path& carpeta) {
    const Descriptor descriptor(::open(carpeta.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor() >= 0) ::fsync(descriptor());
}

// The new content under its temporary name; the file goes with the object unless it was put in place.
class Temporal {
   public:
    explicit Temporal(const fs::path& destino)
        : nombre_(plantillaTemporal(destino)), descriptor_(::mkostemp(nombre_.data(), O_CLOEXEC)) {
        if (descriptor_() < 0 && errno == ENOENT)
            throw Fallo{fmt::format("no existe la carpeta {}", carpetaDe(destino).string())};
        exigir(descriptor_() >= 0);
    }
    Temporal(const Temporal&) = delete;
    Temporal& operator=(const Temporal&) = delete;
    ~Temporal() {
        if (!colocado_) ::unlink(nombre_.c_str());
    }

    void llenar(std::span<const std::uint8_t> bytes, mode_t modo) {
        escribirTodo(descriptor_(), bytes);
        exigir(::fchmod(descriptor_(), modo) == 0);
        sincronizar(descriptor_());
        descriptor_.cerrar();
    }
    void colocar(const fs::path& destino) {
        exigir(::rename(nombre_.c_str(), destino.c_str()) == 0);
        colocado_ = true;
    }

   private:
    std::string nombre_;
    Descriptor descriptor_;
    bool colocado_ = false;
};

struct Motivo {
    int numero;
    std::string_view texto;
};

constexpr Motivo kMotivos[] = {
    {EACCES, "no hay permiso"},
    {EAGAIN, "el dispositivo no responde por ahora"},
    {EBADF, "el archivo o puerto ya no se encuentra abierto"},
    {EBUSY, "otro programa lo tiene en uso"},
    {EDQUOT, "la cuota de disco se ha agotado"},
    {EEXIST, "ya existe"},
    {EFBIG, "el archivo es demasiado grande"},
    {EINTR, "la orden fue interrumpida"},
    {EINVAL, "el sistema no admite esa orden"},
    {EIO, "fallo de entrada o salida"},
    {EISDIR, "es una carpeta"},
    {ELOOP, "demasiados enlaces seguidos"},
    {EMFILE, "demasiados archivos abiertos"},
    {ENAMETOOLONG, "el nombre es demasiado largo"},
    {ENFILE, "demasiados archivos abiertos en el sistema"},
    {ENODEV, "el dispositivo no existe"},
    {ENOENT, "no existe"},
    {ENOMEM, "no queda memoria"},
    {ENOSPC, "no queda espacio en el disco"},
    {ENOTDIR, "una parte de la ruta no es una carpeta"},
    {ENOTEMPTY, "la carpeta no se encuentra vacia"},
    {ENOTSUP, "el sistema no admite esa orden"},
    {ENOTTY, "no es un puerto serie"},
    {ENXIO, "el dispositivo no existe"},
    {EOVERFLOW, "el archivo es demasiado grande"},
    {EPERM, "el sistema no lo permite"},
    {EPIPE, "el otro extremo se ha cerrado"},
    {EROFS, "el disco es de solo lectura"},
    {ESTALE, "el disco de red ha cambiado"},
    {ETIMEDOUT, "el dispositivo no responde"},
    {ETXTBSY, "otro programa lo tiene en uso"},
    {EXDEV, "el destino se encuentra en otro disco"},
};

}  // namespace

void guardarAtomico(const fs::path& ruta, std::span<const std::uint8_t> bytes) {
    try {
        const auto destino = seguirEnlaces(ruta);
        const auto modo = revisarDestino(destino);
        Temporal temporal(destino);
        temporal.llenar(bytes, modo);
        temporal.colocar(destino);
        sincronizarCarpeta(carpetaDe(destino));
    } catch (const Fallo& fallo) {
        const auto nombre = (ruta.has_filename() ? ruta.filename() : ruta).string();
        throw ErrorGuardado(fmt::format("no se pudo guardar {}: {}", nombre, fallo.motivo));
    }
}

void guardarAtomico(const fs::path& ruta, std::string_view bytes) {
    guardarAtomico(ruta, {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

std::string motivoSistema(int numero) {
    const auto* motivo = std::find_if(std::begin(kMotivos), std::end(kMotivos),
                                      [&](const Motivo& m) { return m.numero == numero; });
    if (motivo == std::end(kMotivos)) return fmt::format("error {} del sistema", numero);
    return std::string(motivo->texto);
}

}  // namespace telvane
