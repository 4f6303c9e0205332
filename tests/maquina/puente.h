// The cable: carries bytes both ways between a terminal and the one client of a Unix socket.
#pragma once

#include <filesystem>
#include <thread>

namespace telvane {

class Puente {
   public:
    // Listens once constructed. Throws std::system_error.
    Puente(const std::filesystem::path& terminal, const std::filesystem::path& enchufe);
    Puente(const Puente&) = delete;
    Puente& operator=(const Puente&) = delete;
    ~Puente();

   private:
    void llevar() const;

    int terminal_;
    int escucha_;
    int final_;  // readable once it is over
    std::thread hilo_;
};

}  // namespace telvane
