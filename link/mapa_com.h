// Which device stands behind COM1, COM2, ..., and what a user can be told about each.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "link/puerto_serie.h"

namespace telvane {

// Where the system tells about its devices; a test gives folders of its own.
struct RaicesSistema {
    std::filesystem::path dev = "/dev";
    std::filesystem::path sys = "/sys";
    std::filesystem::path proc = "/proc";
};

// Serial devices that have hardware behind them, none of them opened: USB adapters (ttyUSB*, ttyACM*), then
// on-board ports (ttyS*), each in natural order (ttyUSB2 before ttyUSB10).
std::vector<std::filesystem::path> dispositivosPresentes(const RaicesSistema& raices);

class MapaCom {
   public:
    // The present devices, numbered from 1. A present device keeps its number; one that appears later takes
    // the lowest number without a present device, so an adapter that comes back under another name is found
    // where it was.
    static MapaCom automatico(RaicesSistema raices = {});
    // pares: "N=DEVICE" or "N=tcp://HOST:PORT", N 1 to 12, each once. Numbers not given do not exist. Throws
    // ErrorPuerto (lineaInvalida), which names what they stood in.
    static MapaCom fijo(const std::vector<std::string>& pares, std::string_view opcion = "--com");
    // fijo when there are pairs, automatico otherwise.
    static MapaCom deOpciones(const std::vector<std::string>& pares, RaicesSistema raices = {}) {
        return pares.empty() ? automatico(std::move(raices)) : fijo(pares);
    }

    // The device of a number, which may be absent at the moment. nullopt: the number has none.
    std::optional<std::filesystem::path> dispositivo(int numero) const;
    // Numbers that have a device, ascending.
    std::vector<int> numeros() const;
    // Looks for devices that have come; a fixed map never changes.
    void actualizar();

   private:
    MapaCom() = default;
    void alojar(const std::filesystem::path& dispositivo);

    std::map<int, std::filesystem::path> dispositivos_;
    std::optional<RaicesSistema> raices_;  // none: fixed
};

// enRed: behind a server, which is not asked.
enum class EstadoPuerto { libre, ocupado, sinPermiso, ausente, enRed };

// A process that holds the device.
struct Ocupante {
    pid_t pid = 0;
    std::string nombre;
    bool operator==(const Ocupante&) const = default;
};

// What can be told about a device without opening it. Texts are empty where the system does not say.
struct FichaPuerto {
    std::filesystem::path dispositivo;
    std::filesystem::path nombreEstable;  // under dev/serial/by-id
    std::string producto;
    std::string fabricante;
    std::string serie;
    EstadoPuerto estado = EstadoPuerto::ausente;
    std::vector<Ocupante> ocupantes;  // those that may be seen; ascending
    std::string grupo;                // group to join for permission
};
FichaPuerto describirPuerto(const std::filesystem::path& dispositivo, const RaicesSistema& raices = {});

// Group whose members may read and write the file; empty: none, or no such file.
std::string grupoConPermiso(const std::filesystem::path& archivo);

}  // namespace telvane
