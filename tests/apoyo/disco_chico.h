// A small disk for a test, to be filled and to be made read-only.
#pragma once

#include <sys/mount.h>

#include <filesystem>
#include <string>

namespace telvane {

// Where mounting is allowed.
class DiscoChico {
   public:
    explicit DiscoChico(const std::filesystem::path& carpeta, const std::string& bytes = "64k")
        : carpeta_(carpeta) {
        std::filesystem::create_directory(carpeta_);
        montado_ = ::mount("tmpfs", carpeta_.c_str(), "tmpfs", 0, ("size=" + bytes).c_str()) == 0;
    }
    DiscoChico(const DiscoChico&) = delete;
    DiscoChico& operator=(const DiscoChico&) = delete;
    ~DiscoChico() {
        if (montado_) ::umount(carpeta_.c_str());
    }
    bool montado() const { return montado_; }
    // No room for the name of another file.
    bool sinMasNombres() const {
        return ::mount("tmpfs", carpeta_.c_str(), "tmpfs", MS_REMOUNT, "nr_inodes=1") == 0;
    }
    bool soloLectura() const {
        return ::mount(nullptr, carpeta_.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

   private:
    std::filesystem::path carpeta_;
    bool montado_ = false;
};

}  // namespace telvane
