#include "platform/tarea.h"

#include <algorithm>

namespace telvane {

// The outermost frame of an operation: it keeps the Tarea alive and notes its end.
struct Tareas::Raiz {
    struct promise_type {
        std::uint64_t operacion = 0;
        std::suspend_always initial_suspend() noexcept { return {}; }
        std::suspend_always final_suspend() noexcept { return {}; }
        std::coroutine_handle<promise_type> get_return_object() {
            return std::coroutine_handle<promise_type>::from_promise(*this);
        }
        void return_void() {}
        void unhandled_exception() { std::terminate(); }
    };
    struct Marco {
        using promise_type = Raiz::promise_type;
        std::coroutine_handle<promise_type> asa;
        Marco(std::coroutine_handle<promise_type> h) : asa(h) {}
    };

    std::coroutine_handle<promise_type> asa;

    Raiz() = default;
    Raiz(const Raiz&) = delete;
    Raiz& operator=(const Raiz&) = delete;
    ~Raiz() {
        if (asa) asa.destroy();
    }

    static Marco correr(Tarea<> tarea, const AlFallar& alFallar) {
        std::exception_ptr fallo;
        try {
            co_await tarea;
        } catch (...) {
            fallo = std::current_exception();
        }
        if (fallo) alFallar(fallo);
    }
};

Tareas::Tareas(AlFallar alFallar) : alFallar_(std::move(alFallar)) {}
Tareas::~Tareas() = default;

void Tareas::lanzar(Tarea<> tarea) {
    recoger();
    raices_.push_back(std::make_unique<Raiz>());
    auto asa = Raiz::correr(std::move(tarea), alFallar_).asa;
    raices_.back()->asa = asa;
    asa.promise().operacion = ++lanzadas_;
    asa.resume();
}

std::size_t Tareas::enCurso() const {
    return static_cast<std::size_t>(
        std::count_if(raices_.begin(), raices_.end(), [](const auto& raiz) { return !raiz->asa.done(); }));
}

bool Tareas::esLaMasJoven(std::uint64_t operacion) const {
    return std::none_of(raices_.begin(), raices_.end(), [&](const auto& raiz) {
        return raiz->asa && !raiz->asa.done() && raiz->asa.promise().operacion > operacion;
    });
}

void Tareas::recoger() {
    std::erase_if(raices_, [](const auto& raiz) { return raiz->asa.done(); });
}

}  // namespace telvane
