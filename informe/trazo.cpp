#include "informe/trazo.h"

namespace telvane::informe {

void Trazo::orden(char letra) {
    if (letra == 'z') {
        texto_ += letra;
        x_ = x0_;
        y_ = y0_;
        orden_ = 0;
    } else if (letra != orden_) {
        texto_ += letra;
        orden_ = letra;
    }
}

void Trazo::numero(std::int64_t valor) {
    const char ultimo = texto_.back();
    if (valor >= 0 && ultimo >= '0' && ultimo <= '9') texto_ += ' ';
    texto_ += std::to_string(valor);
}

void Trazo::mover(std::int64_t x, std::int64_t y) {
    orden_ = 0;
    // The first one of a path is absolute whatever its letter.
    orden('m');
    numero(x - x_);
    numero(y - y_);
    x_ = x0_ = x;
    y_ = y0_ = y;
    orden_ = 0;
}

void Trazo::hacia(std::int64_t x, std::int64_t y) {
    if (y == y_) {
        orden('h');
        numero(x - x_);
    } else if (x == x_) {
        orden('v');
        numero(y - y_);
    } else {
        orden('l');
        numero(x - x_);
        numero(y - y_);
    }
    x_ = x;
    y_ = y;
}

void Trazo::punto(std::int64_t x, std::int64_t y) {
    mover(x, y);
    texto_ += "h0";
}

}  // namespace telvane::informe
