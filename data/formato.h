// The formats that an image is exported in.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "data/bloques_texto.h"

namespace telvane {

enum class Formato : std::uint8_t { csv, xls, jsonl };

struct FilaFormato {
    Formato formato;
    std::string_view extension;  // with its dot; without it, the format's name
    std::string_view filtro;     // of the window's file dialog; empty: the window does not write it
    Redaccion redaccion;
    std::string_view pie;  // what stands after the last sample

    constexpr std::string_view nombre() const { return extension.substr(1); }
};

inline constexpr std::array<FilaFormato, 3> kFormatos = {
    {{Formato::csv, ".csv", "datos excel (*.CSV)|*.CSV", Redaccion::linea, "\r\n"},
     {Formato::xls, ".xls", "datos excel (*.xls)|*.xls", Redaccion::linea, "\r\n"},
     {Formato::jsonl, ".jsonl", "", Redaccion::objeto, ""}}};

constexpr const FilaFormato& fila(Formato formato) {
    return kFormatos[static_cast<std::size_t>(formato)];
}
static_assert([] {
    for (const auto& suya : kFormatos)
        if (&fila(suya.formato) != &suya) return false;
    return true;
}());

// nullopt for a text that names none.
std::optional<Formato> leerFormato(std::string_view texto);
// What the ending of a file's name tells, in whatever case; nullopt where it tells none.
std::optional<Formato> formatoDelNombre(const std::filesystem::path& nombre);
// "csv, xls o jsonl"
std::string nombresDeFormatos();
// Why a text names none; empty where it names one.
std::string motivoFormato(const std::string& texto);

}  // namespace telvane
