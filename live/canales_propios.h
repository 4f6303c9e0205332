// Which impossible channels are a logger's own: a sensor that is wrong says so frame after frame, a line does
// not.
#pragma once

#include <cstdint>
#include <span>

#include "link/protocolo.h"

namespace telvane {

class CanalesPropios {
   public:
    // Frames in a row in which a channel must say it.
    static constexpr int kVeces = 3;

    // dudoso: the line may have spoilt it. insiste: the last one that it took to believe the sensor.
    enum class Juicio : std::uint8_t { bueno, dudoso, insiste };
    // enPaso: no byte of an earlier frame can stand before it. Of any other what it says does not count.
    Juicio juzgar(std::span<const std::uint8_t, kBytesMarco> marco, bool enPaso = true);
    // The line did spoil the last one: what it said does not count.
    void interrumpir() { veces_ = 0; }

   private:
    unsigned propios_ = 0;   // one bit a channel, as canalesImposibles
    unsigned insisten_ = 0;  // in each of the frames counted
    int veces_ = 0;
};

}  // namespace telvane
