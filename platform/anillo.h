// A queue in one piece of memory that is used over and over: what passes through by millions asks for none.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace telvane {

template <typename T>
class Anillo {
   public:
    std::size_t size() const { return cuantos_; }
    bool empty() const { return cuantos_ == 0; }
    T& operator[](std::size_t i) { return lugares_[(primero_ + i) & (lugares_.size() - 1)]; }
    const T& operator[](std::size_t i) const { return lugares_[(primero_ + i) & (lugares_.size() - 1)]; }
    T& front() { return (*this)[0]; }
    const T& front() const { return (*this)[0]; }
    T& back() { return (*this)[cuantos_ - 1]; }
    const T& back() const { return (*this)[cuantos_ - 1]; }

    void push_back(const T& uno) {
        if (cuantos_ == lugares_.size()) crecer();
        ++cuantos_;
        back() = uno;
    }
    void pop_front(std::size_t veces = 1) {
        primero_ += veces;
        cuantos_ -= veces;
    }
    void clear() { cuantos_ = 0; }

   private:
    static constexpr std::size_t kAlComienzo = 32;

    // Always a power of two.
    void crecer() {
        std::vector<T> otros(lugares_.empty() ? kAlComienzo : 2 * lugares_.size());
        for (std::size_t i = 0; i < cuantos_; ++i) otros[i] = std::move((*this)[i]);
        lugares_ = std::move(otros);
        primero_ = 0;
    }

    std::vector<T> lugares_;
    std::size_t primero_ = 0;  // goes on counting over the end
    std::size_t cuantos_ = 0;
};

}  // namespace telvane
