// Files as somebody sees them whom permissions hold back.
#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace telvane {

// While it lives, this process is no superuser's, and the folder its own.
class UsuarioCorriente {
   public:
    explicit UsuarioCorriente(const std::filesystem::path& carpeta) : raiz_(::geteuid() == 0) {
        if (raiz_) hecho_ = ::chown(carpeta.c_str(), kNadie, 0) == 0 && ::seteuid(kNadie) == 0;
    }
    UsuarioCorriente(const UsuarioCorriente&) = delete;
    UsuarioCorriente& operator=(const UsuarioCorriente&) = delete;
    ~UsuarioCorriente() {
        if (raiz_) hecho_ = ::seteuid(0) == 0;
    }
    bool hecho() const { return hecho_; }

   private:
    static constexpr uid_t kNadie = 65534;
    bool raiz_;
    bool hecho_ = true;
};

// While it lives, new files lack these permissions.
class Mascara {
   public:
    explicit Mascara(mode_t mascara) : antes_(::umask(mascara)) {}
    Mascara(const Mascara&) = delete;
    Mascara& operator=(const Mascara&) = delete;
    ~Mascara() { ::umask(antes_); }

   private:
    mode_t antes_;
};

}  // namespace telvane
