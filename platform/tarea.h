// Coroutines of the operations.
//
// An operation that waits (for the logger, a message box, a file dialog) is a Tarea: it reads top to bottom
// and suspends instead of running a nested event loop, so a second click or a closed window finds a clean
// stack.
#pragma once

#include <coroutine>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace telvane {

template <class T = void>
class Tarea;

namespace detalle {

struct PromesaBase {
    std::coroutine_handle<> continuacion = std::noop_coroutine();
    // Number of the operation that this coroutine is part of; 0: of none.
    std::uint64_t operacion = 0;
    std::exception_ptr fallo;

    struct AlFinal {
        bool await_ready() noexcept { return false; }
        template <class P>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<P> h) noexcept {
            return h.promise().continuacion;
        }
        void await_resume() noexcept {}
    };

    std::suspend_always initial_suspend() noexcept { return {}; }
    AlFinal final_suspend() noexcept { return {}; }
    void unhandled_exception() { fallo = std::current_exception(); }
};

template <class T>
struct Promesa : PromesaBase {
    std::optional<T> valor;
    Tarea<T> get_return_object();
    void return_value(T v) { valor = std::move(v); }
    T resultado() { return std::move(*valor); }
};

template <>
struct Promesa<void> : PromesaBase {
    Tarea<void> get_return_object();
    void return_void() {}
    void resultado() {}
};

}  // namespace detalle

// A lazily started coroutine; it owns its frame. Awaited once; an exception leaves through the co_await.
template <class T>
class [[nodiscard]] Tarea {
   public:
    using promise_type = detalle::Promesa<T>;
    using Asa = std::coroutine_handle<promise_type>;

    explicit Tarea(Asa asa) : asa_(asa) {}
    Tarea(Tarea&& otra) noexcept : asa_(std::exchange(otra.asa_, {})) {}
    Tarea& operator=(Tarea&& otra) noexcept {
        if (this != &otra) {
            destruir();
            asa_ = std::exchange(otra.asa_, {});
        }
        return *this;
    }
    ~Tarea() { destruir(); }

    bool await_ready() const noexcept { return false; }
    template <class P>
    Asa await_suspend(std::coroutine_handle<P> quien) noexcept {
        asa_.promise().continuacion = quien;
        asa_.promise().operacion = quien.promise().operacion;
        return asa_;
    }
    T await_resume() {
        if (asa_.promise().fallo) std::rethrow_exception(asa_.promise().fallo);
        return asa_.promise().resultado();
    }

   private:
    void destruir() {
        if (asa_) asa_.destroy();
    }

    Asa asa_;
};

template <class T>
Tarea<T> detalle::Promesa<T>::get_return_object() {
    return Tarea<T>(std::coroutine_handle<Promesa<T>>::from_promise(*this));
}
inline Tarea<void> detalle::Promesa<void>::get_return_object() {
    return Tarea<void>(std::coroutine_handle<Promesa<void>>::from_promise(*this));
}

// The operations in flight. Destroying it destroys those that are still suspended; whatever they wait for
// forgets them (see Aviso and Esperas).
class Tareas {
   public:
    using AlFallar = std::function<void(std::exception_ptr)>;

    // alFallar receives what an operation did not expect, and throws nothing.
    explicit Tareas(AlFallar alFallar);
    Tareas(const Tareas&) = delete;
    Tareas& operator=(const Tareas&) = delete;
    ~Tareas();

    // Runs the operation up to its first suspension.
    void lanzar(Tarea<> tarea);
    std::size_t enCurso() const;
    // Whether no operation that was started later is still running. An operation that yielded to another one
    // goes on only after that one: the order in which nested handlers would end.
    bool esLaMasJoven(std::uint64_t operacion) const;

   private:
    struct Raiz;
    void recoger();

    AlFallar alFallar_;
    std::uint64_t lanzadas_ = 0;
    std::vector<std::unique_ptr<Raiz>> raices_;
};

// One answer that arrives later through a callback: `co_await Aviso<Boton>([&](auto listo) { ... })`.
// The callback may come at once, or never, or after the waiting operation was destroyed.
template <class T>
class Aviso {
   public:
    using Listo = std::function<void(T)>;

    explicit Aviso(std::function<void(Listo)> pedir)
        : pedir_(std::move(pedir)), punto_(std::make_shared<Punto>()) {}
    Aviso(const Aviso&) = delete;
    Aviso& operator=(const Aviso&) = delete;
    ~Aviso() { punto_->quien = {}; }

    bool await_ready() const noexcept { return false; }
    bool await_suspend(std::coroutine_handle<> quien) {
        auto punto = punto_;
        pedir_([punto](T valor) {
            if (punto->valor) return;
            punto->valor = std::move(valor);
            if (auto h = std::exchange(punto->quien, {})) h.resume();
        });
        if (punto->valor) return false;
        punto->quien = quien;
        return true;
    }
    T await_resume() { return std::move(*punto_->valor); }

   private:
    struct Punto {
        std::optional<T> valor;
        std::coroutine_handle<> quien;
    };
    std::function<void(Listo)> pedir_;
    std::shared_ptr<Punto> punto_;
};

}  // namespace telvane
