// Keeps the machine from falling asleep, handed in from outside.
#pragma once

#include <memory>
#include <string>

namespace telvane {

class Inhibidor {
   public:
    // The machine stays awake for as long as one of these lives.
    class Guardia {
       public:
        virtual ~Guardia() = default;
    };

    virtual ~Inhibidor() = default;
    // porQue: for the user who asks what keeps the machine awake. Null when the system refuses or knows of no
    // sleep: what was to be guarded goes on all the same.
    virtual std::unique_ptr<Guardia> inhibir(const std::string& porQue) = 0;
};

}  // namespace telvane
