#include "regional/almacen_usuario.h"

#include <langinfo.h>
#include <locale.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

#include "platform/archivo.h"
#include "platform/guardado.h"
#include "platform/motivos.h"
#include "regional/module1.h"

namespace telvane {

namespace {

// More than the file of eight short lines ever needs; a larger one is none of ours.
constexpr std::size_t kMaxAlmacen = std::size_t{64} * 1024;

struct LiberarLocale {
    void operator()(locale_t l) const { freelocale(l); }
};
using Locale = std::unique_ptr<std::remove_pointer_t<locale_t>, LiberarLocale>;

Locale localeDeSesion() {
    if (auto* l = newlocale(LC_ALL_MASK, "", nullptr)) return Locale(l);
    return Locale(newlocale(LC_ALL_MASK, "C", nullptr));
}

// strftime's letters in the words of a date or time pattern; what has no word there stays out.
std::string patron(std::string_view formato) {
    struct Palabra {
        char letra;
        std::string_view texto;
    };
    constexpr std::array<Palabra, 18> kPalabras = {{{'d', "dd"},
                                                    {'e', "d"},
                                                    {'m', "MM"},
                                                    {'y', "yy"},
                                                    {'Y', "yyyy"},
                                                    {'b', "MMM"},
                                                    {'h', "MMM"},
                                                    {'B', "MMMM"},
                                                    {'H', "HH"},
                                                    {'k', "H"},
                                                    {'I', "hh"},
                                                    {'l', "h"},
                                                    {'M', "mm"},
                                                    {'S', "ss"},
                                                    {'p', "tt"},
                                                    {'T', "HH:mm:ss"},
                                                    {'R', "HH:mm"},
                                                    {'r', "hh:mm:ss tt"}}};
    std::string resultado;
    for (std::size_t i = 0; i < formato.size(); ++i) {
        if (formato[i] != '%' || i + 1 == formato.size()) {
            resultado += formato[i];
            continue;
        }
        ++i;
        if (std::string_view("-_0^#EO").find(formato[i]) != std::string_view::npos && i + 1 < formato.size())
            ++i;
        const auto palabra = std::find_if(kPalabras.begin(), kPalabras.end(),
                                          [&](const Palabra& p) { return p.letra == formato[i]; });
        if (palabra != kPalabras.end()) resultado += palabra->texto;
        if (formato[i] == 'D') resultado += "MM/dd/yy";
        if (formato[i] == 'F') resultado += "yyyy-MM-dd";
    }
    return resultado;
}

std::string_view nombreCorto(const std::string& nombre) {
    std::string_view corto = nombre;
    if (!corto.starts_with(kClaveRegional)) {
        throw ErrorRegistro("no existe el valor regional " + nombre);
    }
    corto.remove_prefix(kClaveRegional.size());
    const bool conocido = std::any_of(kValoresRegionales.begin(), kValoresRegionales.end(),
                                      [&](const auto& valor) { return valor.nombre == corto; });
    if (!conocido) throw ErrorRegistro("no existe el valor regional " + nombre);
    return corto;
}

}  // namespace

std::string valorDelLocale(const std::string& nombre) {
    const auto locale = localeDeSesion();
    const auto dato = [&](nl_item cual) { return std::string(nl_langinfo_l(cual, locale.get())); };
    if (nombre == "sDecimal") return dato(RADIXCHAR);
    if (nombre == "sThousand") return dato(THOUSEP);
    if (nombre == "sShortDate") return patron(dato(D_FMT));
    if (nombre == "sTimeFormat") return patron(dato(T_FMT));
    // A session's locale has no list separator or number of digits of its own: where the comma is the decimal
    // point, lists are separated by semicolons.
    if (nombre == "sList") return dato(RADIXCHAR) == "," ? ";" : ",";
    if (nombre == "iDigits") return "2";
    const auto previo = uselocale(locale.get());
    const lconv* convenio = localeconv();
    std::string valor;
    if (nombre == "sMonDecimalSep") valor = convenio->mon_decimal_point;
    if (nombre == "sMonThousandSep") valor = convenio->mon_thousands_sep;
    uselocale(previo);
    return valor;
}

std::map<std::string, std::string> AlmacenUsuario::leer() const {
    if (ruta_.empty()) throw ErrorRegistro("no hay carpeta de ajustes del usuario");
    std::error_code error;
    if (std::filesystem::status(ruta_, error).type() == std::filesystem::file_type::not_found) return {};
    std::string texto;
    try {
        const auto bytes = leerArchivo(ruta_, kMaxAlmacen);
        texto.assign(bytes.begin(), bytes.end());
    } catch (const ErrorLectura& fallo) {
        throw ErrorRegistro(fallo.what());
    }
    std::map<std::string, std::string> valores;
    for (std::size_t desde = 0; desde < texto.size();) {
        const auto fin = std::min(texto.find('\n', desde), texto.size());
        std::string linea = texto.substr(desde, fin - desde);
        desde = fin + 1;
        if (linea.ends_with('\r')) linea.pop_back();
        if (linea.empty() || linea.starts_with('#')) continue;
        const auto igual = linea.find('=');
        if (igual == std::string::npos || igual == 0) {
            throw ErrorRegistro("el archivo de ajustes regionales está dañado: " + ruta_.string() +
                                ". Bórrelo y abra otra vez el programa");
        }
        valores[linea.substr(0, igual)] = linea.substr(igual + 1);
    }
    return valores;
}

std::string AlmacenUsuario::RegRead(const std::string& nombre) {
    const std::string corto(nombreCorto(nombre));
    const auto valores = leer();
    const auto lugar = valores.find(corto);
    return lugar == valores.end() ? valorDelLocale(corto) : lugar->second;
}

void AlmacenUsuario::RegWrite(const std::string& nombre, const std::string& valor) {
    const std::string corto(nombreCorto(nombre));
    auto valores = leer();
    valores[corto] = valor;
    std::string texto = "# Ajustes regionales de Telvane\n";
    for (const auto& [clave, dato] : valores) texto.append(clave).append("=").append(dato).append("\n");
    try {
        std::filesystem::create_directories(ruta_.parent_path());
        guardarAtomico(ruta_, texto);
    } catch (const ErrorGuardado& fallo) {
        throw ErrorRegistro(fallo.what());
    } catch (const std::filesystem::filesystem_error& fallo) {
        throw ErrorRegistro("no se pudo crear la carpeta de ajustes: " + motivoSistema(fallo.code().value()));
    }
}

}  // namespace telvane
