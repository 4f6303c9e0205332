// The path of an SVG drawing, written short: whole numbers, relative steps.
#pragma once

#include <cstdint>
#include <string>

namespace telvane::informe {

class Trazo {
   public:
    void mover(std::int64_t x, std::int64_t y);
    // On from where it is.
    void hacia(std::int64_t x, std::int64_t y);
    void cerrar() { orden('z'); }
    // A dot, as wide as the stroke.
    void punto(std::int64_t x, std::int64_t y);

    bool vacio() const { return texto_.empty(); }
    const std::string& texto() const { return texto_; }

   private:
    void orden(char letra);
    void numero(std::int64_t valor);

    std::string texto_;
    char orden_ = 0;
    std::int64_t x_ = 0;
    std::int64_t y_ = 0;
    // Where the figure under way began: closing it goes back there.
    std::int64_t x0_ = 0;
    std::int64_t y0_ = 0;
};

}  // namespace telvane::informe
