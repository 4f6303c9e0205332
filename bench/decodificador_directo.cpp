#include "bench/decodificador_directo.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>

namespace telvane::bench {

namespace {

static_assert(std::endian::native == std::endian::little, "the words below are taken as they lie in memory");

template <class T>
T leer(const void* p) {
    T valor;
    std::memcpy(&valor, p, sizeof valor);
    return valor;
}

template <class T>
void poner(char* p, const T& valor) {
    std::memcpy(p, &valor, sizeof valor);
}

constexpr std::uint64_t bytes(std::array<std::uint8_t, 6> b) {
    std::uint64_t palabra = 0;
    for (unsigned i = 0; i < b.size(); ++i) palabra |= std::uint64_t{b[i]} << (8 * i);
    return palabra;
}

// Hour to year in the six low bytes. Adding what lacks to 0x80 finds a byte out of bounds; subtracting 1 a
// zero.
constexpr std::uint64_t kSello = 0xFFFF'FFFF'FFFF;
constexpr std::uint64_t kAltos = 0x8080'8080'8080;
constexpr std::uint64_t kBajos = 0x0F0F'0F0F'0F0F;
constexpr std::uint64_t kLimites = bytes({0x50, 0x20, 0x20, 0x40, 0x60, 0x60});
constexpr std::uint64_t kNoCero = bytes({0, 0, 0, 0x7F, 0x7F, 0x7F});
constexpr std::uint64_t kAltosFecha = bytes({0, 0, 0, 0x80, 0x80, 0x80});

bool bueno(std::uint64_t s) {
    const std::uint64_t sinAltos = s & ~kAltos;
    const std::uint64_t mal = s | (sinAltos + kLimites) | ((s & kBajos) + 0x7676'7676'7676);
    const std::uint64_t fecha = (sinAltos + kNoCero) & kAltosFecha;
    return ((mal & kAltos) | (fecha ^ kAltosFecha)) == 0;
}

// Text and its length in the last byte.
using Celda = std::array<char, 8>;

constexpr unsigned kCeldas = 1024;

// Every channel's column, comma included, for the raw values of a ten-bit converter.
struct Tablas {
    std::array<Celda, kCeldas> humedad, temperatura, velViento, radSolar;
    std::array<Celda, 256> presion, lluvia;
    std::array<std::array<char, 16>, 256> viento;
    std::array<std::array<char, 2>, 256> cifras;
};

// Slow and plain; fills the tables and serves the raw values beyond them. decimales: 0, 1 or 2.
char* numero(char* p, long valor, int decimales) {
    if (valor < 0) *p++ = '-';
    auto v = static_cast<unsigned long>(valor < 0 ? -valor : valor);
    while (decimales > 0 && v % 10 == 0) v /= 10, --decimales;
    char al_reves[16];
    int n = 0;
    do {
        al_reves[n++] = static_cast<char>('0' + v % 10);
        v /= 10;
        if (--decimales == 0) al_reves[n++] = '.';
    } while (v != 0 || decimales >= 0);
    while (n > 0) *p++ = al_reves[--n];
    return p;
}

long redondo(long valor, long divisor) {
    return (valor + (valor < 0 ? -divisor / 2 : divisor / 2)) / divisor;
}

char* columnaHumedad(char* p, long crudo) {
    return numero(p, redondo(crudo * 129 - 26445, 1000), 0);
}
char* columnaTemperatura(char* p, long crudo) {
    return numero(p, crudo - 375, 1);
}
char* columnaVelViento(char* p, long crudo) {
    return numero(p, crudo * 2 - 250, 1);
}
char* columnaRadSolar(char* p, long crudo) {
    return numero(p, redondo(crudo * 266, 1000), 2);
}
char* columnaPresion(char* p, long crudo) {
    return numero(p, redondo((crudo + 98) * 899, 100), 1);
}

template <std::size_t N, class Columna>
void llenar(std::array<Celda, N>& tabla, Columna columna) {
    for (std::size_t crudo = 0; crudo < N; ++crudo) {
        char* p = columna(tabla[crudo].data(), static_cast<long>(crudo));
        *p++ = ',';
        tabla[crudo].back() = static_cast<char>(p - tabla[crudo].data());
    }
}

void llenarViento(Tablas& t) {
    constexpr const char* kNombres[] = {"---,", "NNO,", "NO,",  "ONO,", "O,",   "OSO,", "SO,",  "SSO,", "S,",
                                        "SSE,", "SE,",  "ESE,", "E,",   "ENE,", "NE,",  "NNE,", "N,"};
    for (unsigned b = 0; b < 256; ++b) {
        char* p = numero(t.viento[b].data(), redondo(static_cast<long>(b) * 225, 10), 1);
        *p++ = ',';
        const std::string_view nombre = kNombres[b % 10 == 0 && b <= 160 ? b / 10 : 0];
        p = std::copy(nombre.begin(), nombre.end(), p);
        t.viento[b].back() = static_cast<char>(p - t.viento[b].data());
    }
}

const Tablas& tablas() {
    static const Tablas kTablas = [] {
        Tablas t{};
        llenar(t.humedad, columnaHumedad);
        llenar(t.temperatura, columnaTemperatura);
        llenar(t.velViento, columnaVelViento);
        llenar(t.radSolar, columnaRadSolar);
        llenar(t.presion, columnaPresion);
        llenar(t.lluvia, [](char* p, long b) { return numero(p, b * 2, 1); });
        llenarViento(t);
        for (unsigned b = 0; b < 256; ++b) {
            t.cifras[b] = {static_cast<char>('0' + b / 16), static_cast<char>('0' + b % 16)};
        }
        return t;
    }();
    return kTablas;
}

unsigned par(const std::uint8_t* r) {
    return __builtin_bswap16(leer<std::uint16_t>(r));
}

template <std::size_t N, class Columna>
char* celda(char* p, const std::array<Celda, N>& tabla, unsigned crudo, Columna columna) {
    if (crudo < N) [[likely]] {
        poner(p, tabla[crudo]);
        return p + tabla[crudo].back();
    }
    p = columna(p, static_cast<long>(crudo));
    *p = ',';
    return p + 1;
}

char* linea(char* p, const Tablas& t, const std::uint8_t* r) {
    poner(p, t.cifras[r[3]]);
    p[2] = '/';
    poner(p + 3, t.cifras[r[4]]);
    std::copy_n("/20", 3, p + 5);
    poner(p + 8, t.cifras[r[5]]);
    p[10] = ',';
    poner(p + 11, t.cifras[r[0]]);
    p[13] = ':';
    poner(p + 14, t.cifras[r[1]]);
    p[16] = ':';
    poner(p + 17, t.cifras[r[2]]);
    p[19] = ',';
    p = celda(p + 20, t.humedad, par(r + 8), columnaHumedad);
    p = celda(p, t.temperatura, par(r + 10), columnaTemperatura);
    const auto& viento = t.viento[r[12]];
    poner(p, viento);
    p += viento.back();
    p = celda(p, t.velViento, par(r + 13), columnaVelViento);
    p = celda(p, t.radSolar, par(r + 15), columnaRadSolar);
    p = celda(p, t.presion, par(r + 17), columnaPresion);
    poner(p, t.lluvia[r[19]]);
    p += t.lluvia[r[19]].back() - 1;  // no comma after the last column
    std::copy_n("\r\n", 2, p);
    return p + 2;
}

}  // namespace

std::size_t decodificarDirecto(const std::uint8_t* bloques, std::int32_t ultimoBloque, char* destino) {
    constexpr std::int32_t kPrimero = 6;
    const Tablas& t = tablas();
    char* p = destino;
    for (std::int32_t numero = kPrimero; numero <= ultimoBloque; ++numero) {
        const std::uint8_t* bloque = bloques + static_cast<std::ptrdiff_t>(numero) * 64;
        const bool primero = bueno(leer<std::uint64_t>(bloque) & kSello);
        const bool segundo = bueno(leer<std::uint64_t>(bloque + 32) & kSello);
        if (primero & segundo) p = linea(p, t, bloque);
        if (segundo) p = linea(p, t, bloque + 32);
    }
    return static_cast<std::size_t>(p - destino);
}

}  // namespace telvane::bench
