// Serial ports inside the process, with simulated loggers behind them. On the loop and the clock of the test
// they run a search of half a minute or a whole download in milliseconds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "link/protocolo.h"
#include "link/puerto_serie.h"
#include "platform/bucle.h"
#include "platform/reloj.h"
#include "simulator/fallo.h"
#include "simulator/maquina_registrador.h"

namespace telvane {

// Outlives every port opened from it; loop and clock outlive both. A logger hears and speaks "19200,n,8,1"
// only.
class PuertosSimulados final : public Puertos {
   public:
    // baudios: 19200 for the pace of the real line, 0 for answers that arrive whole at the loop's next turn.
    PuertosSimulados(Bucle& bucle, const Reloj& reloj, int baudios = 0);
    ~PuertosSimulados() override;

    // A port with nothing at its other end.
    void agregar(int numero);
    // A port with a logger; replaces what was there.
    void conectar(int numero, MaquinaRegistrador maquina = MaquinaRegistrador());
    // Opening it fails with this reason from now on, until nullopt.
    void rehusar(int numero, std::optional<MotivoPuerto> motivo);

    // The logger as it stands now. Throws std::out_of_range without one.
    MaquinaRegistrador& maquina(int numero);
    // Tampers with every byte of this logger's; the running numbers restart at 0. Empty: nobody does.
    void manipular(int numero, Manipulador manipulador);
    // The next write on this port fails.
    void fallarEscritura(int numero);
    // The line brings these bytes unasked, this event, or the end of the device.
    void inyectar(int numero, std::span<const std::uint8_t> bytes);
    void suceder(int numero, int codigo);
    void colgar(int numero);
    // A device that hung up, or whose wire was cut, is there again.
    void reponer(int numero);

    // Every byte that the PC wrote, whatever became of it, and every one that left the logger's end towards
    // the PC after the tampering, read or not.
    const std::vector<std::uint8_t>& escritos(int numero) const;
    const std::vector<std::uint8_t>& emitidos(int numero) const;
    void olvidarTrafico(int numero);

    bool abierto(int numero) const;
    std::size_t aperturas(int numero) const;  // so far
    // As the last opening left them; dtr and rts as set since.
    AjustesLinea ajustes(int numero) const;

    bool existe(int numero) const override;
    // A port that is open already is refused as busy. Discards what waited.
    std::unique_ptr<PuertoSerie> abrir(int numero, const AjustesLinea& ajustes,
                                       std::function<void()> alDespertar) override;

   private:
    class Puesto;
    class Puerto;
    Puesto& puesto(int numero) const;

    Bucle& bucle_;
    const Reloj& reloj_;
    int baudios_;
    std::map<int, std::unique_ptr<Puesto>> puestos_;
};

}  // namespace telvane
