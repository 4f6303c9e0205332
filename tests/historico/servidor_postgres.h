// The distribution's PostgreSQL for a test: in a folder of its own, on a socket there, as an ordinary user,
// and gone with the test program.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/proceso.h"

namespace telvane {

class ServidorPostgres {
   public:
    // The one of this test program, started when first asked for. Throws std::runtime_error.
    static ServidorPostgres& unico();

    ServidorPostgres();
    ServidorPostgres(const ServidorPostgres&) = delete;
    ServidorPostgres& operator=(const ServidorPostgres&) = delete;
    ~ServidorPostgres();

    // Of a data base without an archive, made where there is none of that name.
    std::string baseVacia(const std::string& nombre);
    // Statements as the server's owner.
    void ejecutar(const std::string& base, const std::string& sql);
    std::string url(const std::string& base, const std::string& usuario = "telvane") const;

    // Where its socket is.
    std::string carpeta() const { return carpeta_.ruta().string(); }

    // Whether a statement waits for a lock there.
    bool alguienEspera(const std::string& base);

    void arrancar();
    // As a machine that loses its power.
    void derribar();

   private:
    CarpetaTemporal carpeta_;
    std::unique_ptr<Proceso> servidor_;
};

}  // namespace telvane
