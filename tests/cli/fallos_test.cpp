// Every command with every fault at every byte of the logger's answers, each followed by a clean run.
#include <algorithm>
#include <span>

#include "app/rejilla_fallos.h"
#include "cli_prueba.h"
#include "simulator/fallo.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

// How a command ends: its status, and what standard error says then.
struct Fin {
    CodigoSalida codigo;
    std::string_view dice;
};
constexpr Fin kHecho{CodigoSalida::hecho, ""};
constexpr Fin kNoHay{CodigoSalida::sinRegistrador, "no hay conexión con el registrador: revise el cable"};
constexpr Fin kNoResponde{CodigoSalida::sinRegistrador, "el registrador no responde: revise el cable"};
constexpr Fin kCallado{CodigoSalida::fallo, "el registrador dejó de responder a mitad de la comunicación"};
constexpr Fin kDeMas{CodigoSalida::fallo, "el registrador envió bytes de más"};
constexpr Fin kInesperada{CodigoSalida::fallo, "respuesta inesperada del registrador"};
constexpr Fin kSobranBytes{CodigoSalida::fallo, "sobran bytes después de un bloque"};
constexpr Fin kErrorDePuerto{CodigoSalida::fallo, "telvane-cli: "};
constexpr Fin kOtroNumero{CodigoSalida::fallo, "el registrador tiene ahora el número"};
constexpr Fin kLecturasDistintas{CodigoSalida::fallo, "dos lecturas de la configuración no coinciden"};
constexpr Fin kNoQuedoComoSeEnvio{CodigoSalida::fallo, "lo leído después no es lo enviado"};

// A part of a command's conversation; places count from its first byte.
struct Etapa;
struct Regla {
    std::size_t desde;
    std::size_t hasta;
    unsigned clases;
    Fin fin;
};
struct Etapa {
    std::size_t bytes;
    std::vector<Regla> reglas;  // first match decides; none: done
};

constexpr std::size_t kBytesLectura = 2 + kBytesConfig;
constexpr std::size_t kBytesEscritura = 1 + kBytesMensajeConfig;
constexpr std::size_t kBytesSerie = 6;
constexpr unsigned kSeCorta = kDesaparece | kCortaLectura;
constexpr std::size_t kUmbral = kUmbralSonda;

// despues: whether the command says anything after its search.
Etapa sonda(bool despues) {
    return {kBytesMarco,
            {{0, kBytesMarco, kSeCorta, kNoHay},
             {0, kUmbral - 1, kTardaDeMas, kNoHay},
             {kUmbral, kBytesMarco, kTardaDeMas, despues ? kNoResponde : kHecho},
             {0, kBytesMarco, kNoEscribe, despues ? kErrorDePuerto : kHecho}}};
}

// Whatever the wake-up is answered is dropped.
Etapa despertar() {
    return {kBytesMarco,
            {{0, kBytesMarco, kTardaDeMas, kNoResponde},
             {0, kBytesMarco, kDesaparece | kNoEscribe, kErrorDePuerto}}};
}

// An exchange of single bytes; propias: rules of its own, which come first.
Etapa pasoAPaso(std::size_t bytes, std::vector<Regla> propias) {
    propias.insert(propias.end(), {{0, 0, kCalla | kPierde | kTardaDeMas, kNoResponde},
                                   {1, bytes, kCalla | kPierde, kCallado},
                                   {0, bytes, kSeCorta | kNoEscribe, kErrorDePuerto}});
    return {bytes, std::move(propias)};
}

// delRegistro: what a wrong byte of the record leads to, for what part of it.
Etapa lectura(std::vector<Regla> delRegistro = {}) {
    for (auto& regla : delRegistro) {
        regla.desde += 2;
        regla.hasta += 2;
        regla.clases = kCambia;
    }
    // The record is whole with its last byte: its echo is waited for by nobody here.
    delRegistro.push_back({kBytesLectura - 1, kBytesLectura - 1, kNoEscribe, kHecho});
    delRegistro.push_back({0, kBytesLectura, kSobra, kDeMas});
    return pasoAPaso(kBytesLectura, std::move(delRegistro));
}

Etapa marco(bool ultimo) {
    return {kBytesMarco,
            {{0, kBytesMarco, kCalla | kPierde | kTardaDeMas, kNoResponde},
             {0, kBytesMarco, kSeCorta, kErrorDePuerto},
             {0, kBytesMarco, kNoEscribe, ultimo ? kHecho : kErrorDePuerto}}};
}

Etapa saludo() {
    return pasoAPaso(
        2, {{0, 0, kSobra, kInesperada}, {1, 1, kSobra, kSobranBytes}, {0, 1, kCambia, kInesperada}});
}

struct Orden {
    const char* nombre;
    std::vector<std::string> argumentos;
    std::vector<Etapa> etapas;
};

void PrintTo(const Orden& orden, std::ostream* flujo) {
    *flujo << orden.nombre;
}

class RejillaCli : public CliPrueba {
   protected:
    // The byte of this number, counted from the command's start, meets the fault.
    void armar(std::size_t numero, std::string_view fallo) {
        puertos.manipular(
            kPuerto, [=, cual = Fallo::leer(fmt::format("sonda:{}", fallo))](const ByteSaliente& saliente) {
                return saliente.numero == numero ? efectoDe(cual, saliente.byte)
                                                 : Efecto::pasar(saliente.byte);
            });
    }
    static Fin finDe(const Etapa& etapa, std::size_t lugar, ClaseDeDano clase) {
        const auto regla = std::find_if(etapa.reglas.begin(), etapa.reglas.end(), [&](const Regla& r) {
            return lugar >= r.desde && lugar <= r.hasta && (r.clases & clase) != 0;
        });
        return regla == etapa.reglas.end() ? kHecho : regla->fin;
    }
    Resultado conFallo(const std::vector<std::string>& orden, const Fin& fin) {
        corridas.otra();
        auto r = correr(orden);
        EXPECT_EQ(r.codigo, fin.codigo) << r.errores;
        EXPECT_THAT(r.errores, HasSubstr(std::string(fin.dice)));
        EXPECT_LT(r.duracion, 60s);
        EXPECT_FALSE(puertos.abierto(kPuerto));
        return r;
    }
    // A user who runs the same command again.
    void limpia(const std::vector<std::string>& orden) {
        puertos.manipular(kPuerto, {});
        puertos.reponer(kPuerto);
        bucle.avanzar(5s);
        const auto r = correr(orden);
        EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
        EXPECT_FALSE(puertos.abierto(kPuerto));
    }

    CuentaDeCorridas corridas;
};

class CadaOrden : public RejillaCli, public testing::WithParamInterface<Orden> {};

TEST_P(CadaOrden, TodoFalloEnTodoByte) {
    const auto& orden = GetParam();
    std::size_t inicio = 0;
    for (const auto& etapa : orden.etapas) {
        for (std::size_t lugar = 0; lugar < etapa.bytes; lugar += pasoDeRejilla(7)) {
            for (const auto& fallo : kFallosDeRejilla) {
                SCOPED_TRACE(fmt::format("byte {} ({} of its part): {}", inicio + lugar, lugar, fallo.texto));
                // The number that the command is to write is never the one that is there.
                puertos.maquina(kPuerto).ponerSerie("02080051");
                armar(inicio + lugar, fallo.texto);
                conFallo(orden.argumentos, finDe(etapa, lugar, fallo.clase));
                limpia(orden.argumentos);
            }
        }
        inicio += etapa.bytes;
    }
}

// Wrong values that the other end cannot be told apart from right ones.
TEST_F(RejillaCli, TodoValorEnTodoByteDeLaLectura) {
    constexpr std::size_t kAntes = 2 * kBytesMarco;
    for (std::size_t lugar = 0; lugar < kBytesLectura; lugar += pasoDeRejilla(30)) {
        for (unsigned valor = 0; valor < 256; ++valor) {
            SCOPED_TRACE(fmt::format("lectura:byte={}:cambiar={:02x}", lugar, valor));
            armar(kAntes + lugar, fmt::format("cambiar={:02x}", valor));
            conFallo({"configuracion"}, kHecho);
        }
        limpia({"configuracion"});
    }
}

TEST_F(RejillaCli, TodoValorEnTodoByteDeLaSerie) {
    constexpr std::size_t kAntes = kBytesMarco + kBytesMarco + kBytesLectura + kBytesMarco;
    const std::vector<std::string> orden = {"serie", "02080050"};
    for (std::size_t lugar = 0; lugar < kBytesSerie; ++lugar) {
        for (unsigned valor = 0; valor < 256; valor += static_cast<unsigned>(pasoDeRejilla(5))) {
            SCOPED_TRACE(fmt::format("serie:byte={}:cambiar={:02x}", lugar, valor));
            puertos.maquina(kPuerto).ponerSerie("02080051");
            armar(kAntes + lugar, fmt::format("cambiar={:02x}", valor));
            conFallo(orden, kHecho);
            EXPECT_EQ(puertos.maquina(kPuerto).serie(), "02080050");
        }
        limpia(orden);
    }
}

// In the record: serial number, texts with the interval, clock.
constexpr std::size_t kFinSerie = registro_config::kUsuario - 1;
constexpr std::size_t kFinIntervalo = registro_config::kIntervalo;
constexpr std::size_t kFinReloj = registro_config::kFin - 1;

INSTANTIATE_TEST_SUITE_P(
    Rejilla, CadaOrden,
    testing::Values(Orden{"buscar", {"buscar"}, {sonda(false)}},
                    Orden{"enLinea", {"en-linea", "--cuenta", "2"}, {sonda(true), marco(false), marco(true)}},
                    Orden{"configuracion", {"configuracion"}, {sonda(true), despertar(), lectura()}},
                    Orden{"serie",
                          {"serie", "02080050"},
                          {sonda(true), despertar(), lectura(), despertar(), pasoAPaso(kBytesSerie, {}),
                           despertar(), lectura({{0, kFinSerie, kCambia, kOtroNumero}})}},
                    Orden{
                        "configurar",
                        {"configurar", "--reloj-pc", "--borrar-memoria", "--sin-respaldo"},
                        {sonda(true), despertar(), lectura({{0, kFinIntervalo, kCambia, kLecturasDistintas}}),
                         despertar(), lectura({{0, kFinIntervalo, kCambia, kLecturasDistintas}}), despertar(),
                         pasoAPaso(kBytesEscritura, {}), despertar(),
                         lectura({{kFinSerie + 1, kFinReloj, kCambia, kNoQuedoComoSeEnvio}})}}),
    [](const auto& caso) { return std::string(caso.param.nombre); });

// ---- The download: what came is on the disk, whatever the fault.

class RejillaDescarga : public RejillaCli {
   protected:
    static constexpr std::size_t kAntes = 3 * kBytesMarco + kBytesLectura;

    std::vector<std::string> orden() {
        return {"descargar", "--reintentos", "0", "--base", (carpeta / "a.rgt").string()};
    }
    void sinArchivos() {
        std::filesystem::remove(carpeta / "a.rgt");
        std::filesystem::remove(carpeta / "a.rgt.parcial");
    }
    // The base file, whole or not: what it holds of the logger's memory.
    void esperarBloques(std::size_t bloques) {
        const bool entero = bloques == kBloquesMemoria;
        EXPECT_EQ(std::filesystem::exists(carpeta / "a.rgt"), entero);
        EXPECT_EQ(std::filesystem::exists(carpeta / "a.rgt.parcial"), !entero && bloques > 0);
        if (bloques == 0) return;
        const auto ruta = carpeta / (entero ? "a.rgt" : "a.rgt.parcial");
        EXPECT_EQ(std::filesystem::file_size(ruta), bloques * kBytesBloque);
    }
};

TEST_F(RejillaDescarga, Saludo) {
    const auto etapa = saludo();
    for (std::size_t lugar = 0; lugar < etapa.bytes; ++lugar) {
        for (const auto& fallo : kFallosDeRejilla) {
            SCOPED_TRACE(fmt::format("descarga:byte={}:{}", lugar, fallo.texto));
            sinArchivos();
            armar(kAntes + lugar, fallo.texto);
            const auto fin = finDe(etapa, lugar, fallo.clase);
            conFallo(orden(), fin);
            esperarBloques(fin.codigo == CodigoSalida::hecho ? kBloquesMemoria : 0);
            limpia(orden());
        }
    }
}

TEST_F(RejillaDescarga, TodoValorEnElSaludo) {
    constexpr std::array<std::uint8_t, 2> kRespuestas = {kApertura, kSaludo};
    for (std::size_t lugar = 0; lugar < kRespuestas.size(); ++lugar) {
        for (unsigned valor = 0; valor < 256; ++valor) {
            if (valor == kRespuestas[lugar]) continue;
            SCOPED_TRACE(fmt::format("descarga:byte={}:cambiar={:02x}", lugar, valor));
            armar(kAntes + lugar, fmt::format("cambiar={:02x}", valor));
            conFallo(orden(), kInesperada);
        }
        limpia(orden());
        sinArchivos();
    }
}

class CadaBloque : public RejillaDescarga, public testing::WithParamInterface<std::size_t> {
   protected:
    // A block at each of its bytes, and how many blocks are on the disk afterwards.
    std::pair<Fin, std::size_t> finDeBloque(ClaseDeDano clase) const {
        const auto bloque = GetParam();
        const bool ultimo = bloque == kBloquesMemoria - 1;
        if ((clase & (kCalla | kPierde)) != 0) return {kCallado, bloque};
        if ((clase & kSeCorta) != 0) return {kErrorDePuerto, bloque};
        if ((clase & kSobra) != 0) return {kSobranBytes, bloque};
        // The image is whole with its last block: the acknowledge is waited for by nobody here.
        if ((clase & kNoEscribe) != 0 && !ultimo) return {kErrorDePuerto, bloque + 1};
        return {kHecho, kBloquesMemoria};
    }
};

TEST_P(CadaBloque, TodoFalloEnTodoByte) {
    for (std::size_t lugar = 0; lugar < kBytesBloque; lugar += pasoDeRejilla(63)) {
        for (const auto& fallo : kFallosDeRejilla) {
            SCOPED_TRACE(fmt::format("descarga:bloque={}:byte={}:{}", GetParam(), lugar, fallo.texto));
            sinArchivos();
            armar(kAntes + 2 + GetParam() * kBytesBloque + lugar, fallo.texto);
            const auto [fin, bloques] = finDeBloque(fallo.clase);
            const auto r = conFallo(orden(), fin);
            esperarBloques(bloques);
            if (fin.codigo != CodigoSalida::hecho && bloques > 0) {
                EXPECT_THAT(r.errores, HasSubstr(fmt::format("quedan {} de 4096 bloques", bloques)));
            }
            limpia({"configuracion"});
        }
    }
    limpia(orden());
    EXPECT_EQ(leerTodo(carpeta / "a.rgt"), comoTexto(puertos.maquina(kPuerto).imagen()));
}

INSTANTIATE_TEST_SUITE_P(Rejilla, CadaBloque, testing::Values(0u, 1u, 2047u, kBloquesMemoria - 1),
                         [](const auto& caso) { return std::to_string(caso.param); });

}  // namespace
}  // namespace telvane
