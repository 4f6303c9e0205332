// Settings of a download that nobody watches: one file a station, or the one file of the single-station
// download. Lines of NAME=value with a shell's quotes, which are read and never run.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace telvane {

// Tells the file, the line where there is one, and what to write instead. Never holds a password.
class ErrorAjustes : public std::runtime_error {
   public:
    using std::runtime_error::runtime_error;
};

struct AjustesDescarga {
    std::string nombre = "estacion";  // what file names begin with; the station's
    std::vector<std::string> com;     // "N=DEVICE"; of a station exactly one
    std::string serie;                // 8 digits; empty: whichever logger answers
    std::string como;                 // name beside it in the archive, where two loggers bear one number
    std::string carpeta;              // empty: the default one
    std::string archivo;              // archive; empty: the default one
    bool sinArchivo = false;          // the images go into none
    std::string central;              // archive to copy to; empty: none
    std::string perfil = "ampliado";  // empty: the options say it
    std::string hasta = "07:00";      // when trying again ends
    std::vector<std::string> opciones;

    // Behind "N=" of the only port.
    std::string dispositivo() const;
    // Whether what they name is reached over the network.
    bool red() const;
};

enum class ClaseAjustes {
    estacion,  // the name is the file's; a setting stands once
    nocturna   // COM, CARPETA, NOMBRE, PERFIL and OPCIONES; of two lines the last one counts
};

// Throws ErrorAjustes.
AjustesDescarga leerAjustes(const std::filesystem::path& archivo, ClaseAjustes clase);

// The value behind NAME=, its quotes taken away. Throws ErrorAjustes with the reason alone. nombre: for it.
std::string leerValor(std::string_view texto, std::string_view nombre);

}  // namespace telvane
