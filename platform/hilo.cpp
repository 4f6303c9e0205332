#include "platform/hilo.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace telvane {

namespace {

constexpr std::size_t kPila = 512UL * 1024;

void exigir(int motivo, const char* que) {
    if (motivo != 0) throw std::system_error(motivo, std::generic_category(), que);
}

}  // namespace

Hilo::Pila::Pila()
    : desde_(::mmap(nullptr, kPila, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0)) {
    exigir(desde_ == MAP_FAILED ? errno : 0, "mmap");
    // Who goes beyond its end is stopped there.
    static_cast<void>(::mprotect(desde_, static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)), PROT_NONE));
}

Hilo::Pila::~Pila() {
    ::munmap(desde_, kPila);
}

Hilo::Hilo(std::function<void()> trabajo) : trabajo_(std::move(trabajo)) {
    pthread_attr_t modo;
    exigir(::pthread_attr_init(&modo), "pthread_attr_init");
    int motivo = ::pthread_attr_setstack(&modo, pila_.desde(), kPila);
    if (motivo == 0) motivo = ::pthread_create(&numero_, &modo, correr, this);
    ::pthread_attr_destroy(&modo);
    exigir(motivo, "pthread_create");
}

Hilo::~Hilo() {
    ::pthread_join(numero_, nullptr);
}

void* Hilo::correr(void* hilo) noexcept {
    static_cast<Hilo*>(hilo)->trabajo_();
    return nullptr;
}

}  // namespace telvane
