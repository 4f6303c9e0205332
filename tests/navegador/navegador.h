// A real browser without a window, told what to do over its own protocol on two pipes: nothing listens on a
// port, and nothing but the browser is needed.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/apoyo/carpeta_temporal.h"

namespace telvane {

class Navegador {
   public:
    using Json = nlohmann::json;
    // Far beyond what a loaded machine needs; passing it throws.
    static constexpr std::chrono::seconds kPlazo{300};

    struct Pantalla {
        int ancho = 1280;
        int alto = 900;
        bool oscura = false;
    };

    // programa: path of Chromium.
    Navegador(const std::string& programa, const Pantalla& pantalla);
    Navegador(const Navegador&) = delete;
    Navegador& operator=(const Navegador&) = delete;
    ~Navegador();

    // From the next page on.
    void pantalla(const Pantalla& pantalla);
    // Returns when the page has loaded and its scripts have run.
    void abrir(const std::filesystem::path& pagina);
    // The value of an expression in the page; what it throws is thrown. A promise is waited for.
    Json valor(const std::string& expresion);
    void tecla(const std::string& nombre, int codigo);
    // The page on A4 as PDF.
    std::string imprimir();
    // PNG of what is seen.
    std::string foto();

    // Addresses that anything of the page asked for, the page's own aside.
    const std::vector<std::string>& pedidos() const { return pedidos_; }
    // Errors, refusals by the policy and warnings that the browser told.
    const std::vector<std::string>& quejas() const { return quejas_; }

    Json orden(const std::string& metodo, const Json& parametros = Json::object());

   private:
    Json recibir();
    void anotar(const Json& suceso);
    void esperarSuceso(const std::string& metodo);

    CarpetaTemporal carpeta_;
    pid_t proceso_ = -1;
    int hacia_ = -1;
    int desde_ = -1;
    std::string leido_;
    int numero_ = 0;
    std::string sesion_;
    std::string pagina_;
    std::vector<std::string> sucesos_;
    std::vector<std::string> pedidos_;
    std::vector<std::string> quejas_;
};

}  // namespace telvane
