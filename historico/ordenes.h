// The commands, one file each: what it is called, which options it has, and what it does.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "calidad/limites_por_estacion.h"
#include "consola/aplicacion_consola.h"
#include "consola/consola.h"
#include "consola/entorno_consola.h"
#include "consola/salida_consola.h"
#include "historico/archivo.h"
#include "historico/destino.h"
#include "historico/lectura.h"
#include "platform/argumentos.h"

namespace telvane {

// What the archive's program gets from outside besides its console.
struct EquipoHistorico {
    // UTC.
    std::function<Incorporada()> ahora;
    // How long to wait for another program that writes.
    std::chrono::milliseconds paciencia = std::chrono::seconds(10);
};
struct EntornoHistorico : EntornoConsola, EquipoHistorico {};

struct ContextoHistorico {
    EntornoHistorico& entorno;
    Consola& consola;
    std::optional<std::string> en;  // --en
    OrdenElegida orden;             // the chosen command; throws ErrorCli

    // The archive of --en, or the user's own.
    std::unique_ptr<Almacen> abrir(Uso uso) const;
    // Another one. Both throw ErrorNombre where a standard stream goes into it.
    std::unique_ptr<Almacen> abrir(const std::string& destino, Uso uso) const;
    // What a command writes of an archive: never over the archive itself.
    // limites: the file that --limites names.
    SalidaConsola salida(const std::string& ruta, ReglaDestino regla, const Almacen* almacen,
                         const std::optional<std::string>& limites = {}) const;
    // What is read, by a file's name or as the standard input. Throws ErrorLectura, ErrorCli.
    std::vector<std::uint8_t> leer(const std::string& archivo, std::size_t maximo) const;
    // Throws ErrorNombre where a standard stream goes into one of these.
    void exigirFlujosLibres(const std::vector<std::string>& leidos) const;
    void apuntarLeido(ArchivosLeidos& leidos, const std::string& archivo) const;
    // The signals that came meanwhile, between two steps of a long work. Throws ErrorCli (interrumpido).
    void atender() const;
};

// What a work tells as it goes. The work comes first: once nobody takes what it tells, it goes on in silence.
class Relato {
   public:
    explicit Relato(Consola& consola) : consola_(consola) {}
    // Throws ErrorCli (interrumpido).
    void decir(std::string_view texto);
    // fallo: what went wrong with the work itself; empty: nothing. hecho: what was done all the
    // same where not all of it was told. Throws ErrorCli (fallo) where something of either kind went wrong.
    void terminar(std::string fallo, std::string_view hecho = "") const;

   private:
    Consola& consola_;
    std::string motivo_;  // why not
};

// Of --desde and --hasta, which are good moments by themselves. Throws ErrorUso.
Periodo periodoEntre(const std::optional<std::string>& desde, const std::optional<std::string>& hasta);

// The limits of the quality marks: of the file that was asked for, or of the one beside the archive where
// there is one. Throws ErrorLectura, ErrorLimites.
LimitesPorEstacion leerLimites(const ContextoHistorico& contexto, const std::optional<std::string>& pedidos,
                               const std::filesystem::path& alLado);

// All of them, and what they share.
void declararOrdenes(Argumentos& argumentos, ContextoHistorico& contexto);

void declararIncorporar(Argumentos& argumentos, ContextoHistorico& contexto);
void declararEstado(Argumentos& argumentos, ContextoHistorico& contexto);
void declararExportar(Argumentos& argumentos, ContextoHistorico& contexto);
void declararImagenes(Argumentos& argumentos, ContextoHistorico& contexto);
void declararImagen(Argumentos& argumentos, ContextoHistorico& contexto);
void declararComprobar(Argumentos& argumentos, ContextoHistorico& contexto);
void declararRehacer(Argumentos& argumentos, ContextoHistorico& contexto);
void declararCopiar(Argumentos& argumentos, ContextoHistorico& contexto);
void declararInforme(Argumentos& argumentos, ContextoHistorico& contexto);
void declararResumen(Argumentos& argumentos, ContextoHistorico& contexto);

}  // namespace telvane
