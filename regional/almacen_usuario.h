// The user's regional store: one small file with the eight values under their own names, and the session's
// locale for what is not in it.
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "regional/registro.h"

namespace telvane {

class AlmacenUsuario final : public Registro {
   public:
    // ruta: the store, "name=value" a line, UTF-8, "#" for a comment. Empty: no home, every access fails.
    explicit AlmacenUsuario(std::filesystem::path ruta) : ruta_(std::move(ruta)) {}

    std::string RegRead(const std::string& nombre) override;
    void RegWrite(const std::string& nombre, const std::string& valor) override;

   private:
    std::map<std::string, std::string> leer() const;

    std::filesystem::path ruta_;
};

// A value of kValoresRegionales as the session's locale has it (LC_ALL, LC_NUMERIC, LC_TIME, LC_MONETARY,
// LANG); a locale that does not exist counts as "C".
std::string valorDelLocale(const std::string& nombre);

}  // namespace telvane
