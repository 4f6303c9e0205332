// Every command with every fault at every byte of the logger's answers, each followed by a clean run.
#include <algorithm>
#include <map>
#include <regex>
#include <span>

#include "live/marco_en_linea.h"
#include "platform/cp1252.h"
#include "platform/texto_visible.h"
#include "regional/formatos.h"
#include "simulator/fallo.h"
#include "tests/app/rejilla_fallos.h"
#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::MatchesRegex;

// How a command ends: its status, and what standard error says then.
struct Fin {
    CodigoSalida codigo;
    std::string_view dice;
};
constexpr Fin kHecho{CodigoSalida::hecho, ""};
constexpr Fin kNoHay{CodigoSalida::sinRegistrador, "no hay conexión con el registrador: revise el cable"};
constexpr Fin kNoResponde{CodigoSalida::sinRegistrador, "el registrador no responde: revise el cable"};
constexpr Fin kCallado{CodigoSalida::fallo,
                       "el registrador dejó de responder a mitad de la comunicación: revise el cable"};
constexpr Fin kInesperada{CodigoSalida::fallo, "respuesta inesperada del registrador. Revise el cable"};
constexpr Fin kSobranBytes{CodigoSalida::fallo, "sobran bytes después de un bloque. Revise el cable"};
constexpr Fin kErrorDePuerto{CodigoSalida::fallo, "telvane-cli: "};
constexpr Fin kOtroNumero{CodigoSalida::fallo, "lo leído después es el número"};
constexpr Fin kOtraLectura{CodigoSalida::hecho, "Dos lecturas de la configuración no coinciden"};
constexpr Fin kOtroMarco{CodigoSalida::hecho, "lectura repetida (1 desde el comienzo)"};
constexpr Fin kSeRepite{CodigoSalida::hecho, "reintentos que quedan: 1"};
constexpr Fin kNadaYNoResponde{CodigoSalida::sinRegistrador, "No se envió nada"};
constexpr Fin kNada{CodigoSalida::fallo, "No se envió nada"};
// Where the last byte did not leave, the one that wakes the logger for the next exchange is taken for it.
constexpr Fin kConOtroFinal{CodigoSalida::fallo, "Dé la memoria por borrada"};
constexpr Fin kParte{CodigoSalida::fallo, "el registrador no cambia nada hasta el último"};

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

constexpr unsigned kSeCorta = kDesaparece | kCortaLectura;
constexpr std::size_t kUmbral = kUmbralSonda;

// What a command says after its search.
enum class Sigue { nada, lecturas, lectura };

Etapa sonda(Sigue sigue) {
    return {kBytesMarco,
            {{0, kBytesMarco, kSeCorta, kNoHay},
             {0, kUmbral - 1, kTardaDeMas, kNoHay},
             {0, kBytesMarco, kNoEscribe, sigue == Sigue::lecturas ? kErrorDePuerto : kHecho}}};
}

// Whatever the wake-up is answered is dropped. A reading behind it is tried again, a write is not.
Etapa despertarParaLeer() {
    return {kBytesMarco,
            {{0, kBytesMarco, kTardaDeMas | kNoEscribe, kSeRepite},
             {0, kBytesMarco, kDesaparece, kErrorDePuerto}}};
}
Etapa despertarParaEscribir() {
    return {
        kBytesMarco,
        {{0, kBytesMarco, kTardaDeMas, kNadaYNoResponde}, {0, kBytesMarco, kDesaparece | kNoEscribe, kNada}}};
}

// An exchange of single bytes, which is broken by these faults.
Etapa pasoAPaso(std::size_t bytes, std::vector<Regla> propias) {
    propias.insert(propias.end(), {{0, 0, kCalla | kPierde | kTardaDeMas, kNoResponde},
                                   {1, bytes, kCalla | kPierde, kCallado},
                                   {0, bytes, kSeCorta | kNoEscribe, kErrorDePuerto}});
    return {bytes, std::move(propias)};
}

// The answer to the opening byte, then one for each byte that is written: nothing is sent before the second.
Etapa escritura(std::size_t bytes, Fin ultimoSinSalir) {
    return {bytes,
            {{0, 0, kCalla | kPierde | kTardaDeMas, kNadaYNoResponde},
             {1, 1, kCalla | kPierde, kNada},
             {0, 1, kSeCorta, kNada},
             {0, 0, kNoEscribe, kNada},
             {bytes - 1, bytes - 1, kNoEscribe, ultimoSinSalir},
             {2, bytes, kCalla | kPierde | kSeCorta, kParte},
             {1, bytes, kNoEscribe, kParte}}};
}

// Tried again whatever broke it. delRegistro: what a wrong byte of the record leads to.
Etapa lectura(std::vector<Regla> delRegistro = {}) {
    for (auto& regla : delRegistro) {
        regla.desde += 2;
        regla.hasta += 2;
        regla.clases = kCambia;
    }
    // The record is whole with its last byte: its echo is waited for by nobody here.
    delRegistro.push_back({kRespuestasLectura - 1, kRespuestasLectura - 1, kNoEscribe, kHecho});
    delRegistro.push_back({0, 0, kTardaDeMas, kSeRepite});
    delRegistro.push_back(
        {0, kRespuestasLectura, kCalla | kPierde | kSobra | kCortaLectura | kNoEscribe, kSeRepite});
    delRegistro.push_back({0, kRespuestasLectura, kDesaparece, kErrorDePuerto});
    return {kRespuestasLectura, std::move(delRegistro)};
}

Etapa marco(bool ultimo) {
    return {kBytesMarco,
            {{0, kBytesMarco, kCalla | kPierde | kTardaDeMas | kSobra, kOtroMarco},
             {marco::kHumedad, marco::kHumedad, kCambia, kOtroMarco},
             {marco::kTemperatura, marco::kTemperatura, kCambia, kOtroMarco},
             {marco::kVelViento, marco::kVelViento, kCambia, kOtroMarco},
             {marco::kRadSolar, marco::kRadSolar, kCambia, kOtroMarco},
             {0, kBytesMarco, kSeCorta, kErrorDePuerto},
             {0, kBytesMarco, kNoEscribe, ultimo ? kHecho : kErrorDePuerto}}};
}

Etapa saludo() {
    return pasoAPaso(
        2, {{0, 0, kSobra, kInesperada}, {1, 1, kSobra, kSobranBytes}, {0, 1, kCambia, kInesperada}});
}

constexpr const char* kConfiguracion = "Muestras cada [0-9]* Minutos\n([^\n]+\n){6}Reloj: [^\n]+\n";
struct Dicho {
    std::string_view orden;
    const char* salida;
    const char* errores;
};
constexpr std::array<Dicho, 6> kDichos = {{
    {"buscar", "COM3 \n", ""},
    {"en-linea", "(\\[RH%\\]([^\n]+\n){8}\n){2}", ""},
    {"configuracion", kConfiguracion, ""},
    {"serie", "02080050\n", "Nro de serie: .{8} -> 02080050\n"},
    {"configurar", kConfiguracion, "Reloj: \"[^\n]+\" -> \"[^\n]+\"\n"},
    {"descargar", "",
     "Registrador en COM3: se lee la configuración.\nNro .{8}: se descarga la memoria.\n"
     "(.*a.rgt.parcial conserva [0-9]+ bloques? de una descarga anterior.*\n)?Archivo base: .*/a.rgt\n"},
}};

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
    explicit RejillaCli(int baudios = 0) : CliPrueba(baudios) {
        if (red) losPuertos = red.get();
    }
    // By the tool.
    bool abierto() const { return red ? red->abierto() : puertos.abierto(kPuerto); }
    std::vector<FalloDeRejilla> losFallos() const { return fallosDeRejilla(red != nullptr); }
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
        if (fin.codigo != CodigoSalida::hecho) {
            EXPECT_TRUE(r.salida.empty() || orden.front() == "en-linea") << r.salida;
        }
        EXPECT_LT(r.duracion, 60s);
        EXPECT_FALSE(abierto());
        return r;
    }
    // The number and the clock that a command is to write are never those that are there.
    void desigualar() {
        auto& maquina = puertos.maquina(kPuerto);
        maquina.ponerSerie("02080051");
        maquina.ponerReloj({2020, 1, 2, 3h}, bucle.reloj().monotono());
    }
    // A user who runs the same command again.
    void limpia(const std::vector<std::string>& orden) {
        puertos.manipular(kPuerto, {});
        puertos.reponer(kPuerto);
        bucle.avanzar(5s);
        const auto r = correr(orden);
        EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
        esperarHecho(orden.front(), r);
        EXPECT_FALSE(abierto());
    }
    // What is told of readings that were damaged and taken again, or doubted: everything else is the
    // command's own.
    static std::string sinQuejas(const std::string& errores) {
        static const std::regex kQuejas(
            "hora mal\n|fecha mal\n|lectura repetida \\([0-9]+ desde el comienzo\\): [^\n]+\n|"
            "[^\n]+\nSe vuelve a empezar; reintentos que quedan: [0-9]+\\.\n|"
            "La configuración leída dice Nro .{8} y la memoria, Nro .{8}: vale el de la memoria\\.\n|"
            "La configuración leída y la memoria no dicen lo mismo \\([^\n]+\\): vale lo de la memoria\\.\n");
        return std::regex_replace(errores, kQuejas, "");
    }
    // All that a command says when it was carried out. danado: a byte met a fault on its way.
    static void esperarHecho(const std::string& orden, const Resultado& r, bool danado = false) {
        const auto dicho =
            std::find_if(kDichos.begin(), kDichos.end(), [&](const auto& d) { return d.orden == orden; });
        ASSERT_NE(dicho, kDichos.end()) << orden;
        EXPECT_THAT(r.salida, MatchesRegex(dicho->salida));
        EXPECT_THAT(danado ? sinQuejas(r.errores) : r.errores, MatchesRegex(dicho->errores));
    }

    std::unique_ptr<PuertoEnRed> red = redDeRejilla(bucle, puertos, kPuerto);
    CuentaDeCorridas corridas;
};

class CadaOrden : public RejillaCli, public testing::WithParamInterface<Orden> {};

TEST_P(CadaOrden, EveryFaultInEveryByte) {
    const auto& orden = GetParam();
    std::size_t inicio = 0;
    for (const auto& etapa : orden.etapas) {
        for (std::size_t lugar = comienzoDeRejilla(); lugar < etapa.bytes; lugar += pasoDeRejilla(7)) {
            for (const auto& fallo : losFallos()) {
                SCOPED_TRACE(fmt::format("byte {} ({} of its part): {}", inicio + lugar, lugar, fallo.texto));
                desigualar();
                armar(inicio + lugar, fallo.texto);
                const auto fin = finDe(etapa, lugar, fallo.clase);
                const auto r = conFallo(orden.argumentos, fin);
                if (fin.codigo == CodigoSalida::hecho && fin.dice.empty()) {
                    esperarHecho(orden.argumentos.front(), r, true);
                }
                desigualar();
                limpia(orden.argumentos);
            }
        }
        inicio += etapa.bytes;
    }
}

// At the pace of the wire a byte too many comes after the one before it has been answered: it is seen behind
// the record, and nothing of such a reading is shown.
class RejillaConElPasoDeLaLinea : public RejillaCli {
   protected:
    RejillaConElPasoDeLaLinea() : RejillaCli(kBaudios) {}
};

TEST_F(RejillaConElPasoDeLaLinea, AByteTooManyAnywhereInTheReadingIsSeen) {
    constexpr std::size_t kAntes = 2 * kBytesMarco;
    for (std::size_t lugar = 0; lugar < kRespuestasLectura; lugar += pasoDeRejilla(7)) {
        for (const auto* fallo : {"insertar=1", "doblar", "insertar=40"}) {
            SCOPED_TRACE(fmt::format("lectura:byte={}:{}", lugar, fallo));
            armar(kAntes + lugar, fallo);
            const auto r = conFallo({"configuracion"}, kSeRepite);
            EXPECT_THAT(r.errores, HasSubstr("el registrador envió bytes de más"));
            EXPECT_THAT(r.salida, HasSubstr("Nro  : 02080050\n"));
        }
        limpia({"configuracion"});
    }
}

// The greatest byte that each place of the record's clock takes.
constexpr std::array<unsigned, 6> kMayores = {0x23, 0x59, 0x59, 0x59, 0x59, 0x64};

// What `configuracion` makes of a record, straight from its bytes.
std::string configuracionDe(std::span<const std::uint8_t> ficha) {
    const auto cifras = [&](std::size_t lugar) {
        return std::string{static_cast<char>('0' + ficha[lugar] / 16),
                           static_cast<char>('0' + ficha[lugar] % 16)};
    };
    const std::map<unsigned, std::string> minutos = {{0x01, "1"},  {0x05, "5"},  {0x10, "10"},
                                                     {0x15, "15"}, {0x30, "30"}, {0x60, "60"}};
    const auto intervalo = minutos.find(ficha[104]);
    auto texto =
        fmt::format("Muestras cada {} Minutos\n", intervalo == minutos.end() ? "" : intervalo->second);
    texto += "Nro  : " + cifras(0) + cifras(1) + cifras(2) + cifras(3) + "\n";
    const auto campo = [&](const char* rotulo, std::size_t desde, std::size_t largo) {
        texto += rotulo + sinControles(utf8DeCp1252(ficha.subspan(desde, largo))) + "\n";
    };
    campo("Usuario: ", 4, 30);
    campo("Ubicacion: ", 34, 35);
    campo("Latitud: ", 69, 15);
    campo("Longitud: ", 84, 15);
    campo("Altitud: ", 99, 5);
    std::array<int, 6> reloj{};
    for (std::size_t i = 0; i < reloj.size(); ++i) {
        const unsigned byte = ficha[105 + i];
        if (byte > kMayores[i] || byte % 16 > 9) return texto + "Reloj: incorrecto\n";
        reloj[i] = static_cast<int>(byte / 16 * 10 + byte % 16);
    }
    const auto dia = fechaConAcarreo(2000 + reloj[5], reloj[4], reloj[3]);
    return texto + fmt::format("Reloj: {:02}/{:02}/{} {:02}:{:02}:{:02}\n", dia.dia, dia.mes, dia.anio,
                               reloj[0], reloj[1], reloj[2]);
}

// And what it complains of.
std::string quejaDe(std::span<const std::uint8_t> ficha) {
    std::string queja;
    for (std::size_t i = 0; i < kMayores.size(); ++i) {
        if (ficha[105 + i] > kMayores[i]) queja += i < 3 ? "hora mal\n" : "fecha mal\n";
    }
    return queja;
}

// Wrong values that the other end cannot be told apart from right ones.
TEST_F(RejillaCli, EveryValueInEveryByteOfTheReading) {
    constexpr std::size_t kAntes = 2 * kBytesMarco;
    for (std::size_t lugar = 0; lugar < kRespuestasLectura; lugar += pasoDeRejilla(30)) {
        for (unsigned valor = 0; valor < 256; ++valor) {
            SCOPED_TRACE(fmt::format("lectura:byte={}:cambiar={:02x}", lugar, valor));
            std::vector<std::uint8_t> ficha;
            puertos.manipular(kPuerto, [&](const ByteSaliente& saliente) {
                const bool es = saliente.numero == kAntes + lugar;
                const auto byte = es ? static_cast<std::uint8_t>(valor) : saliente.byte;
                if (saliente.numero >= kAntes + 2) ficha.push_back(byte);
                return Efecto::pasar(byte);
            });
            const auto r = conFallo({"configuracion"}, kHecho);
            ASSERT_EQ(ficha.size(), kBytesConfig);
            EXPECT_EQ(r.salida, configuracionDe(ficha));
            EXPECT_EQ(r.errores, quejaDe(ficha));
        }
        limpia({"configuracion"});
    }
}

TEST_F(RejillaCli, EveryValueInEveryByteOfTheSerialNumber) {
    constexpr std::size_t kAntes = kBytesMarco + 2 * (kBytesMarco + kRespuestasLectura) + kBytesMarco;
    const std::vector<std::string> orden = {"serie", "02080050"};
    for (std::size_t lugar = 0; lugar < kRespuestasSerie; ++lugar) {
        for (unsigned valor = 0; valor < 256; valor += static_cast<unsigned>(pasoDeRejilla(5))) {
            SCOPED_TRACE(fmt::format("serie:byte={}:cambiar={:02x}", lugar, valor));
            puertos.maquina(kPuerto).ponerSerie("02080051");
            armar(kAntes + lugar, fmt::format("cambiar={:02x}", valor));
            esperarHecho("serie", conFallo(orden, kHecho), true);
            EXPECT_EQ(puertos.maquina(kPuerto).serie(), "02080050");
        }
        limpia(orden);
    }
}

// In the record: serial number, texts and interval; the clock follows.
constexpr std::size_t kFinIntervalo = registro_config::kIntervalo;

INSTANTIATE_TEST_SUITE_P(
    Rejilla, CadaOrden,
    testing::Values(
        Orden{"buscar", {"buscar"}, {sonda(Sigue::nada)}},
        Orden{"enLinea", {"en-linea", "--cuenta", "2"}, {sonda(Sigue::lecturas), marco(false), marco(true)}},
        Orden{"configuracion", {"configuracion"}, {sonda(Sigue::lectura), despertarParaLeer(), lectura()}},
        Orden{"serie",
              {"serie", "02080050"},
              {sonda(Sigue::lectura), despertarParaLeer(),
               lectura({{0, kFinIntervalo, kCambia, kOtraLectura}}), despertarParaLeer(),
               lectura({{0, kFinIntervalo, kCambia, kOtraLectura}}), despertarParaEscribir(),
               escritura(kRespuestasSerie, kOtroNumero), despertarParaLeer(), lectura()}},
        Orden{"configurar",
              {"configurar", "--reloj-pc", "--borrar-memoria", "--sin-respaldo"},
              {sonda(Sigue::lectura), despertarParaLeer(),
               lectura({{0, kFinIntervalo, kCambia, kOtraLectura}}), despertarParaLeer(),
               lectura({{0, kFinIntervalo, kCambia, kOtraLectura}}), despertarParaEscribir(),
               escritura(kRespuestasEscritura, kConOtroFinal), despertarParaLeer(), lectura()}}),
    [](const auto& caso) { return std::string(caso.param.nombre); });

// ---- The download: what came is on the disk, whatever the fault.

class RejillaDescarga : public RejillaCli {
   protected:
    static constexpr std::size_t kAntes = 3 * kBytesMarco + kRespuestasLectura;

    std::vector<std::string> orden() {
        return {"descargar", "--reintentos", "0", "--reemplazar", "--base", (carpeta / "a.rgt").string()};
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

TEST_F(RejillaDescarga, EveryFaultInTheHandshake) {
    const auto etapa = saludo();
    for (std::size_t lugar = 0; lugar < etapa.bytes; ++lugar) {
        for (const auto& fallo : losFallos()) {
            SCOPED_TRACE(fmt::format("descarga:byte={}:{}", lugar, fallo.texto));
            sinArchivos();
            armar(kAntes + lugar, fallo.texto);
            const auto fin = finDe(etapa, lugar, fallo.clase);
            const auto r = conFallo(orden(), fin);
            if (fin.codigo == CodigoSalida::hecho) esperarHecho("descargar", r, true);
            esperarBloques(fin.codigo == CodigoSalida::hecho ? kBloquesMemoria : 0);
            limpia(orden());
        }
    }
}

TEST_F(RejillaDescarga, EveryValueInTheHandshake) {
    constexpr std::array<std::uint8_t, 2> kRespuestas = {kApertura, kSaludo};
    for (std::size_t lugar = 0; lugar < kRespuestas.size(); ++lugar) {
        for (unsigned valor = 0; valor < 256; ++valor) {
            if (valor == kRespuestas[lugar]) continue;
            SCOPED_TRACE(fmt::format("descarga:byte={}:cambiar={:02x}", lugar, valor));
            armar(kAntes + lugar, fmt::format("cambiar={:02x}", valor));
            conFallo(orden(), kInesperada);
            esperarBloques(0);
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

TEST_P(CadaBloque, EveryFaultInEveryByte) {
    // A whole download takes its time, in pieces above all.
    const auto paso = pasoDeRejilla(63, GetParam() > 1 ? 3 : 1) * (red && red->enPedazos() ? 21 : 1);
    for (std::size_t lugar = 0; lugar < kBytesBloque; lugar += paso) {
        for (const auto& fallo : losFallos()) {
            SCOPED_TRACE(fmt::format("descarga:bloque={}:byte={}:{}", GetParam(), lugar, fallo.texto));
            sinArchivos();
            armar(kAntes + 2 + GetParam() * kBytesBloque + lugar, fallo.texto);
            const auto [fin, bloques] = finDeBloque(fallo.clase);
            const auto r = conFallo(orden(), fin);
            esperarBloques(bloques);
            if (fin.codigo == CodigoSalida::hecho) esperarHecho("descargar", r, true);
            if (fin.codigo != CodigoSalida::hecho && bloques > 0) {
                EXPECT_THAT(r.errores, HasSubstr(fmt::format(" {} de 4096 bloques", bloques)));
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
