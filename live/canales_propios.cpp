#include "live/canales_propios.h"

#include "live/marco_en_linea.h"

namespace telvane {

CanalesPropios::Juicio CanalesPropios::juzgar(std::span<const std::uint8_t, kBytesMarco> marco, bool enPaso) {
    const auto imposibles = canalesImposibles(marco) & ~propios_;
    if (imposibles == 0) {
        interrumpir();
        return Juicio::bueno;
    }
    if (!enPaso) {
        interrumpir();
        return Juicio::dudoso;
    }
    if (veces_ == 0 || (insisten_ & imposibles) == 0) {
        insisten_ = imposibles;
        veces_ = 0;
    }
    insisten_ &= imposibles;
    if (++veces_ < kVeces) return Juicio::dudoso;
    propios_ |= imposibles;
    interrumpir();
    return Juicio::insiste;
}

}  // namespace telvane
