// The memory of images, used again as soon as the last who shares one has let go of it, in whatever thread:
// what is asked of the system for each of them costs as much as a third of unpacking it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace telvane {

class ReservaBytes {
   public:
    using Bytes = std::vector<std::uint8_t>;

    // Whatever the one before left in it; what is taken may outlive this object.
    std::shared_ptr<Bytes> tomar() {
        auto bytes = libres_->sacar();
        if (!bytes) bytes = std::make_unique<Bytes>();
        return std::unique_ptr<Bytes, Devolver>(bytes.release(), Devolver{libres_});
    }

   private:
    using Suyos = std::unique_ptr<Bytes>;

    class Libres {
       public:
        Suyos sacar() {
            const std::scoped_lock cerrojo(turno_);
            return cuantos_ > 0 ? std::move(lugares_[--cuantos_]) : nullptr;
        }
        // Those for which there is no place are freed.
        void guardar(Suyos bytes) {
            const std::scoped_lock cerrojo(turno_);
            if (cuantos_ < lugares_.size()) lugares_[cuantos_++] = std::move(bytes);
        }

       private:
        static constexpr std::size_t kLugares = 4;
        std::mutex turno_;
        std::array<Suyos, kLugares> lugares_;
        std::size_t cuantos_ = 0;
    };

    struct Devolver {
        std::shared_ptr<Libres> libres;
        void operator()(Bytes* bytes) const { libres->guardar(Suyos(bytes)); }
    };

    std::shared_ptr<Libres> libres_ = std::make_shared<Libres>();
};

}  // namespace telvane
