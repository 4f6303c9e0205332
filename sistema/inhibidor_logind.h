// The machine's sleep held off through the login service.
#pragma once

#include <string>

#include "platform/inhibidor.h"

namespace telvane {

// Without the service, its library or its permission inhibir gives null. It waits for half a second at
// most, reaching the service included.
class InhibidorLogind final : public Inhibidor {
   public:
    // quien: name of the program, for the list that the system shows.
    explicit InhibidorLogind(std::string quien) : quien_(std::move(quien)) {}
    std::unique_ptr<Guardia> inhibir(const std::string& porQue) override;

   private:
    std::string quien_;
};

}  // namespace telvane
