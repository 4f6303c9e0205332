// Opens a file with the program that the desktop associates with it.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <list>

#include "platform/bucle.h"
#include "platform/descriptor.h"
#include "platform/reloj.h"

namespace telvane {

// The desktop's opener runs by itself and outlives us; how it ends is heard through the loop.
class Abridor {
   public:
    Abridor(Bucle& bucle, const Reloj& reloj) : bucle_(bucle), reloj_(reloj) {}
    Abridor(const Abridor&) = delete;
    Abridor& operator=(const Abridor&) = delete;

    // alFallar: there is no opener, or it soon says that it could not open the file.
    void abrir(const std::filesystem::path& ruta, const std::function<void()>& alFallar);

   private:
    struct EnMarcha {
        Descriptor proceso;
        std::chrono::nanoseconds comienzo;
        std::function<void()> alFallar;
        Bucle::Asidero vigilancia = nullptr;
    };
    using Lugar = std::list<EnMarcha>::iterator;

    void terminado(Lugar cual);

    Bucle& bucle_;
    const Reloj& reloj_;
    std::list<EnMarcha> enMarcha_;
};

}  // namespace telvane
