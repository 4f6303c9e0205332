#include "cli/ajustes_descarga.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <map>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "cli/ordenes.h"
#include "consola/nombres.h"
#include "data/sello.h"
#include "link/direccion_tcp.h"
#include "link/mapa_com.h"
#include "link/puerto_serie.h"
#include "loggerconfig/pasos_serie.h"
#include "platform/archivo.h"
#include "platform/contrasena.h"
#include "platform/motivos.h"
#include "platform/palabra_de_consola.h"
#include "platform/recorte.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMaximo = 1U << 20U;
constexpr std::string_view kBlancos = " \t";

[[noreturn]] void mal(const std::string& que) {
    throw ErrorAjustes(que);
}

bool blanco(char c) {
    return c == ' ' || c == '\t';
}
bool cifra(char c) {
    return c >= '0' && c <= '9';
}

// Takes a value's characters one after the other.
class Valor {
   public:
    Valor(std::string_view texto, std::string_view nombre) : resto_(texto), nombre_(nombre) {
        const char* casa = std::getenv("HOME");
        if (resto_.starts_with("~/")) {
            hecho_ = casa ? casa : "";
            resto_.remove_prefix(1);
        }
    }

    std::string leer() {
        while (!resto_.empty()) {
            const char c = siguiente();
            if (comilla_ == '\'') {
                enSimples(c);
            } else if (comilla_ == '"') {
                enDobles(c);
            } else if (blanco(c)) {
                exigirFinal();
                break;
            } else {
                suelto(c);
            }
        }
        if (comilla_ != 0) mal("falta la comilla que cierra");
        return std::move(hecho_);
    }

   private:
    char siguiente() {
        const char c = resto_.front();
        resto_.remove_prefix(1);
        return c;
    }
    void enSimples(char c) {
        if (c == '\'') {
            comilla_ = 0;
        } else {
            hecho_ += c;
        }
    }
    void enDobles(char c) {
        if (c == '"') {
            comilla_ = 0;
        } else if (c == '\\' && !resto_.empty()) {
            const char otro = siguiente();
            if (std::string_view("\"\\$`").find(otro) == std::string_view::npos) hecho_ += c;
            hecho_ += otro;
        } else {
            exigirQueNoSeEjecute(c);
            hecho_ += c;
        }
    }
    void suelto(char c) {
        if (c == '\'' || c == '"') {
            comilla_ = c;
        } else if (c == '\\') {
            if (resto_.empty()) mal("termina en \\: un ajuste no sigue en la línea siguiente, quítela");
            hecho_ += siguiente();
        } else {
            exigirQueNoSeEjecute(c);
            if (std::string_view(";&|<>()").find(c) != std::string_view::npos)
                mal(fmt::format("{} sin comillas: escriba {}=\"...\"", c, nombre_));
            hecho_ += c;
        }
    }
    static void exigirQueNoSeEjecute(char c) {
        if (c == '$' || c == '`') mal(fmt::format("{} no vale: los ajustes se leen, no se ejecutan", c));
    }
    void exigirFinal() const {
        const auto sobra = recortado(resto_, kBlancos);
        if (!sobra.empty() && sobra.front() != '#')
            mal(fmt::format("hay un blanco sin comillas: escriba {}=\"...\"", nombre_));
    }

    std::string_view resto_;
    std::string_view nombre_;
    std::string hecho_;
    char comilla_ = 0;
};

// How many digits of a port's number and "=" begin here; 0: none.
std::size_t largoDeNumero(std::string_view texto) {
    for (const std::size_t cifras : {1U, 2U}) {
        const bool todas = texto.size() > cifras && std::ranges::all_of(texto.substr(0, cifras), cifra);
        if (todas && texto[cifras] == '=') return cifras + 1;
    }
    return 0;
}

// A path may hold blanks; one that is not there and goes on like another pair is that pair, mistyped.
void exigirUnSoloPuerto(const std::string& par, const std::string& dispositivo) {
    std::error_code sinMotivo;
    if (fs::exists(dispositivo, sinMotivo)) return;
    const auto tras = [&](std::size_t i) { return std::string_view(par).substr(i + 1); };
    for (std::size_t i = 0; i < par.size(); ++i) {
        const bool separa = par[i] == ',' || par[i] == ';';
        const bool otro = (separa && largoDeNumero(tras(i)) > 0) ||
                          (blanco(par[i]) && (tras(i).starts_with("/") || tras(i).starts_with("tcp:") ||
                                              tras(i).find('=') != std::string_view::npos ||
                                              tras(i).find("/dev/") != std::string_view::npos));
        if (!otro) continue;
        mal(
            fmt::format("COM: en \"{}\" parece haber dos puertos: el segundo también se escribe "
                        "NÚMERO=/DISPOSITIVO, tras un blanco",
                        par));
    }
}

// The first "N=DEVICE": the next one begins at a blank, a number and "=".
std::string tomarPar(std::string_view& resto) {
    std::size_t fin = 0;
    while (fin < resto.size() && !(blanco(resto[fin]) && largoDeNumero(resto.substr(fin + 1)) > 0)) ++fin;
    std::string par(recortado(resto.substr(0, fin), kBlancos));
    resto = recortado(resto.substr(fin), kBlancos);
    const auto numero = largoDeNumero(par);
    const auto dispositivo = par.substr(numero);
    if (numero == 0 || !(dispositivo.starts_with('/') || esDireccionTcp(dispositivo))) {
        mal(fmt::format(
            "COM: \"{}\" no es NÚMERO=/DISPOSITIVO, por ejemplo 1=/dev/ttyUSB0; ¿falta una barra?", par));
    }
    exigirUnSoloPuerto(par, dispositivo);
    return par;
}

std::vector<std::string> leerCom(std::string_view valor) {
    std::vector<std::string> pares;
    for (auto resto = recortado(valor, kBlancos); !resto.empty();) pares.push_back(tomarPar(resto));
    try {
        if (!pares.empty()) static_cast<void>(MapaCom::fijo(pares, "COM:"));
    } catch (const ErrorPuerto& error) {
        mal(error.what());
    }
    return pares;
}

bool esPostgres(std::string_view destino) {
    return destino.starts_with("postgresql://") || destino.starts_with("postgres://");
}

std::string comoDestino(std::string_view nombre, std::string valor) {
    if (!valor.starts_with('/') && !esPostgres(valor)) {
        // The value may hold a password.
        mal(fmt::format("{}: no empieza por / ni por postgresql://; ¿falta una barra?", nombre));
    }
    return valor;
}

std::string comoHora(std::string valor) {
    const auto par = [&](std::size_t i, int tope) {
        return cifra(valor[i]) && cifra(valor[i + 1]) && std::stoi(valor.substr(i, 2)) < tope;
    };
    const bool bien = valor.size() == 5 && valor[2] == ':' && par(0, 24) && par(3, 60);
    if (!bien) mal(fmt::format("HASTA: \"{}\" no vale: es una hora, como 07:00", valor));
    return valor;
}

bool esOpcion(const std::string& palabra, std::string_view opcion) {
    return palabra == opcion || palabra.starts_with(std::string(opcion) + "=");
}

// The value of the option among these words; empty: it has none.
std::string valorDe(const std::vector<std::string>& palabras, std::string_view opcion) {
    const auto una =
        std::ranges::find_if(palabras, [&](const auto& palabra) { return esOpcion(palabra, opcion); });
    if (una == palabras.end()) return "";
    if (*una != opcion) return una->substr(opcion.size() + 1);
    return una + 1 == palabras.end() ? "" : *(una + 1);
}

// Values become file names and lines for whoever downloads.
void exigirTexto(std::string_view ajuste, std::string_view valor) {
    if (sinControles(valor) != valor)
        mal(fmt::format(
            "{}: hay un carácter de control o mal escrito: quítelo, y guarde el archivo como UTF-8", ajuste));
}

// motivo: why the value is none; empty: it is one.
void exigir(std::string_view ajuste, const std::string& valor, const std::string& motivo) {
    if (!motivo.empty()) mal(fmt::format("{}: \"{}\" no vale: {}", ajuste, valor, motivo));
}

void exigirRuta(std::string_view ajuste, std::string_view valor) {
    if (!valor.starts_with('/'))
        mal(fmt::format("{}: \"{}\" no empieza por /; ¿falta una barra?", ajuste, valor));
}

class Lector {
   public:
    Lector(fs::path archivo, ClaseAjustes clase) : archivo_(std::move(archivo)), clase_(clase) {}

    AjustesDescarga leer() {
        if (deEstacion()) ponerNombreDeArchivo();
        const auto bytes = contenido();
        std::string_view resto(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        while (!resto.empty()) {
            ++linea_;
            const auto fin = std::min(resto.find('\n'), resto.size());
            conLinea([&] { tomarLinea(resto.substr(0, fin)); });
            resto.remove_prefix(std::min(fin + 1, resto.size()));
        }
        const bool suyo =
            std::ranges::any_of(ajustes_.opciones, [](const auto& una) { return esOpcion(una, "--perfil"); });
        if (suyo) ajustes_.perfil.clear();
        if (deEstacion() && ajustes_.com.empty())
            falta("falta COM, el puerto de la estación: COM=1=/dev/ttyUSB0");
        if (!ajustes_.central.empty() && ajustes_.sinArchivo)
            falta("CENTRAL copia lo que hay en ARCHIVO: quite CENTRAL, o ponga un archivo en ARCHIVO");
        if (!ajustes_.como.empty() && ajustes_.sinArchivo)
            falta("COMO es su nombre en ARCHIVO: quite COMO, o ponga un archivo en ARCHIVO");
        return std::move(ajustes_);
    }

   private:
    bool deEstacion() const { return clase_ == ClaseAjustes::estacion; }
    std::string cual() const { return nombreVisible(archivo_); }
    [[noreturn]] void falta(const std::string& que) const { mal(fmt::format("{}: {}", cual(), que)); }

    template <class Paso>
    void conLinea(const Paso& paso) const {
        try {
            paso();
        } catch (const ErrorAjustes& error) {
            mal(fmt::format("{}, línea {}: {}", cual(), linea_, sinContrasenas(sinControles(error.what()))));
        }
    }

    std::vector<std::uint8_t> contenido() const {
        try {
            auto bytes = leerArchivo(archivo_, kMaximo + 1);
            if (bytes.size() <= kMaximo) return bytes;
        } catch (const ErrorLectura& error) {
            const bool sinPermiso = error.motivo() == motivoSistema(EACCES);
            mal(fmt::format("no se pueden leer los ajustes {}: {}", cual(),
                            sinPermiso ? motivoSinConsejo(EACCES) +
                                             ": repita con sudo; para que la descarga los lea, " + soloSuyos()
                                       : error.motivo()));
        }
        // What would stand behind would count for nothing.
        mal(fmt::format("no se pueden leer los ajustes {}: tiene más de {} bytes, quite lo que sobra", cual(),
                        kMaximo));
    }

    void ponerNombreDeArchivo() {
        // systemd makes file names of it, with those of the unit and of the unit that mails its failures: 147
        // would still fit.
        constexpr std::size_t kMasLargo = 128;
        ajustes_.nombre = archivo_.stem().string();
        if (ajustes_.nombre.size() > kMasLargo || !soloDeNombre(ajustes_.nombre))
            falta(
                fmt::format("el nombre de la estación es el del archivo, de letras sin tilde, cifras, - y _, "
                            "{} como mucho: cámbielo",
                            kMasLargo));
    }

    void tomarLinea(std::string_view texto) {
        if (texto.find('\0') != std::string_view::npos)
            mal("tiene un byte nulo: guarde el archivo como UTF-8");
        if (texto.starts_with("\xEF\xBB\xBF"))
            mal("empieza con una marca invisible (BOM): guarde el archivo como UTF-8 sin ella");
        if (texto.find('\r') != std::string_view::npos)
            mal("termina en CR LF: guarde el archivo con finales de línea de Unix");
        texto = recortado(texto, kBlancos);
        if (texto.empty() || texto.front() == '#') return;
        const auto igual = texto.find('=');
        if (igual == std::string_view::npos) mal("se espera NOMBRE=valor");
        if (texto.starts_with("export ")) return tomarLinea(texto.substr(7));
        const std::string nombre(texto.substr(0, igual));
        if (!nombre.empty() && blanco(nombre.back()))
            mal(fmt::format("sobra el blanco delante de =: escriba {}=valor", recortado(nombre, kBlancos)));
        poner(nombre, texto.substr(igual + 1));
    }

    using Puesta = void (Lector::*)(std::string);
    Puesta puestaDe(const std::string& nombre) const {
        static const std::map<std::string, Puesta> kDeTodas = {{"COM", &Lector::com},
                                                               {"CARPETA", &Lector::carpeta},
                                                               {"PERFIL", &Lector::perfil},
                                                               {"OPCIONES", &Lector::opciones}};
        static const std::map<std::string, Puesta> kDeEstacion = {{"SERIE", &Lector::serie},
                                                                  {"COMO", &Lector::como},
                                                                  {"ARCHIVO", &Lector::archivo},
                                                                  {"CENTRAL", &Lector::central},
                                                                  {"HASTA", &Lector::hasta}};
        if (const auto una = kDeTodas.find(nombre); una != kDeTodas.end()) return una->second;
        if (!deEstacion()) {
            if (nombre == "NOMBRE") return &Lector::comienzo;
            mal(fmt::format("no hay un ajuste \"{}\": son COM, CARPETA, NOMBRE, PERFIL y OPCIONES", nombre));
        }
        if (const auto una = kDeEstacion.find(nombre); una != kDeEstacion.end()) return una->second;
        mal(
            fmt::format("no hay un ajuste \"{}\": son COM, SERIE, COMO, CARPETA, ARCHIVO, CENTRAL, PERFIL, "
                        "HASTA y OPCIONES",
                        nombre));
    }

    void poner(const std::string& nombre, std::string_view escrito) {
        const auto puesta = puestaDe(nombre);
        if (const auto antes = lineas_.find(nombre); deEstacion() && antes != lineas_.end())
            mal(fmt::format("{} ya está en la línea {}: deje una de las dos", nombre, antes->second));
        lineas_[nombre] = linea_;
        auto valor = leerValor(escrito, nombre);
        // Between the values of these a tab is as good as a blank.
        if (puesta == &Lector::com || puesta == &Lector::opciones) std::ranges::replace(valor, '\t', ' ');
        exigirTexto(nombre, valor);
        (this->*puesta)(std::move(valor));
    }

    void com(std::string valor) {
        ajustes_.com = leerCom(valor);
        if (deEstacion() && ajustes_.com.size() != 1)
            mal("COM: una estación tiene un puerto, NÚMERO=/DISPOSITIVO o NÚMERO=tcp://MÁQUINA:PUERTO");
    }
    void carpeta(std::string valor) {
        exigirRuta("CARPETA", valor);
        ajustes_.carpeta = std::move(valor);
    }
    void comienzo(std::string valor) {
        if (valor.empty() || valor.find('/') != std::string::npos)
            mal(fmt::format("NOMBRE: \"{}\" no vale: es el comienzo de un nombre, sin barras", valor));
        if (valor == "." || valor == "..")
            mal(fmt::format("NOMBRE: \"{}\" no vale: es una carpeta; escriba el comienzo de un nombre",
                            valor));
        ajustes_.nombre = std::move(valor);
    }
    void perfil(std::string valor) {
        exigir("PERFIL", valor, motivoPerfil(valor));
        ajustes_.perfil = std::move(valor);
    }
    void serie(std::string valor) {
        exigir("SERIE", valor, motivoSerieMostrada(valor));
        ajustes_.serie = std::move(valor);
    }
    void como(std::string valor) {
        exigir("COMO", valor, motivoNombre(valor));
        ajustes_.como = std::move(valor);
    }
    void archivo(std::string valor) {
        ajustes_.sinArchivo = valor.empty();
        if (!valor.empty()) ajustes_.archivo = comoDestino("ARCHIVO", guardado(std::move(valor)));
    }
    void central(std::string valor) {
        if (!valor.empty()) ajustes_.central = comoDestino("CENTRAL", guardado(std::move(valor)));
    }
    void hasta(std::string valor) { ajustes_.hasta = comoHora(std::move(valor)); }

    // What the settings say themselves is not for the options; a profile in the last of them counts instead
    // of PERFIL.
    void opciones(std::string valor) {
        const auto escritas = palabras(valor, kBlancos);
        ajustes_.opciones.assign(escritas.begin(), escritas.end());
        for (const auto& palabra : ajustes_.opciones) {
            if (esOpcion(palabra, "--base") || esOpcion(palabra, "--csv"))
                mal(fmt::format("OPCIONES: {} no vale aquí: los nombres salen de CARPETA y {}", palabra,
                                deEstacion() ? "del de este archivo" : "NOMBRE"));
            if (esOpcion(palabra, "--com"))
                mal(fmt::format("OPCIONES: {} no vale aquí: escriba COM=", palabra));
            if (deEstacion() && (esOpcion(palabra, "--ficha") || esOpcion(palabra, "--reemplazar")))
                mal(fmt::format("OPCIONES: {} no vale aquí: cada descarga la lleva ya, con su nombre",
                                palabra));
            if (deEstacion() && esOpcion(palabra, "--serie"))
                mal(fmt::format("OPCIONES: {} no vale aquí: escriba SERIE=", palabra));
        }
        // One that the download does not understand would be told at night, when nobody looks.
        if (const auto motivo = motivoOpcionesDescargar(ajustes_.opciones); !motivo.empty())
            mal(fmt::format("OPCIONES: {} (telvane-cli descargar --help)", motivo));
        // Nobody says from which folder it would count.
        const auto ficha = valorDe(ajustes_.opciones, "--ficha");
        if (!ficha.empty() && ficha != "-") exigirRuta("OPCIONES: --ficha", ficha);
    }

    // A password is nobody else's.
    std::string guardado(std::string valor) const {
        struct stat datos {};
        const bool otrosLeen = ::stat(archivo_.c_str(), &datos) != 0 || (datos.st_mode & S_IROTH) != 0;
        if (otrosLeen && sinContrasena(valor) != valor)
            mal("lleva una contraseña y todos pueden leer el archivo: " + soloSuyos());
        return valor;
    }

    // Commands after which nobody reads the file but the download and whoever keeps the machine.
    std::string soloSuyos() const {
        return fmt::format("sudo chown root:telvane {0} && sudo chmod 0640 {0}",
                           palabraDeConsola(fs::absolute(archivo_).string()));
    }

    fs::path archivo_;
    ClaseAjustes clase_;
    std::size_t linea_ = 0;
    std::map<std::string, std::size_t> lineas_;
    AjustesDescarga ajustes_;
};

}  // namespace

std::string AjustesDescarga::dispositivo() const {
    if (com.empty()) return "";
    auto suyo = com.front().substr(com.front().find('=') + 1);
    const auto direccion = leerDireccionTcp(suyo);
    return direccion ? direccion->completa() : suyo;
}

bool AjustesDescarga::red() const {
    const bool puertoEnRed = std::ranges::any_of(
        com, [](const auto& par) { return esDireccionTcp(std::string_view(par).substr(par.find('=') + 1)); });
    return puertoEnRed || esPostgres(archivo) || esPostgres(central);
}

std::string leerValor(std::string_view texto, std::string_view nombre) {
    return Valor(texto, nombre).leer();
}

AjustesDescarga leerAjustes(const fs::path& archivo, ClaseAjustes clase) {
    return Lector(archivo, clase).leer();
}

}  // namespace telvane
