// The file that changes the limits for some stations:
//
//     [02080050]
//     temperatura.rango = -40 50
//     temperatura.salto = 8
//     temperatura.fijo  = 12h 0.3
//
// A station's name in brackets, then lines "channel.mark = values" in the channel's unit; the channels and
// marks are those of the table of usual limits. The wind's two take a third number, the speed above which it
// blows. Empty lines, and lines that begin with # or ;, say nothing.
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

#include "calidad/limites.h"
#include "platform/texto_visible.h"

namespace telvane {

class ErrorLimites : public std::runtime_error {
   public:
    explicit ErrorLimites(const std::string& que) : std::runtime_error(sinControles(que)) {}
};

class LimitesPorEstacion {
   public:
    LimitesPorEstacion() = default;
    // archivo: its name for messages. Throws ErrorLimites with name, line and reason in Spanish.
    static LimitesPorEstacion leer(std::string_view texto, const std::string& archivo);

    // estacion: as the archive names it, "02080050" or "02080050/NORTE".
    const Limites& de(const std::string& estacion) const;

   private:
    std::map<std::string, Limites> propios_;
};

}  // namespace telvane
