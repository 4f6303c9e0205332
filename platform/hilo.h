// A thread that leaves nothing behind: the C library keeps the stacks of its own for threads to come, which
// memory that has a limit may not have.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>

namespace telvane {

class Hilo {
   public:
    // trabajo throws nothing, and needs no more than half a megabyte of stack. Throws std::system_error where
    // the system has no further thread, or no memory for it.
    explicit Hilo(std::function<void()> trabajo);
    Hilo(const Hilo&) = delete;
    Hilo& operator=(const Hilo&) = delete;
    // Waits for its end.
    ~Hilo();

   private:
    // Mapped while it lives.
    class Pila {
       public:
        Pila();
        Pila(const Pila&) = delete;
        Pila& operator=(const Pila&) = delete;
        ~Pila();
        void* desde() const { return desde_; }

       private:
        void* desde_;
    };

    static void* correr(void* hilo) noexcept;

    std::function<void()> trabajo_;
    Pila pila_;
    pthread_t numero_{};
};

}  // namespace telvane
