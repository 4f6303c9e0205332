// JSON for other programs. The library that writes it is seen in one source file only.
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace telvane {

// A value: null unless it is made of something else, or something is put into it.
class Json {
   public:
    Json();
    Json(const Json& otro);
    Json(Json&& otro) noexcept;
    Json& operator=(Json otro) noexcept;
    ~Json();

    Json(std::string_view texto);
    Json(const std::string& texto) : Json(std::string_view(texto)) {}
    Json(const char* texto) : Json(std::string_view(texto)) {}
    template <std::same_as<bool> Logico>
    Json(Logico valor) : Json(Exacto{}, valor) {}
    // What 64 bits with a sign hold.
    template <std::integral Entero>
    requires(!std::same_as<Entero, bool>) Json(Entero valor)
        : Json(Exacto{}, static_cast<std::int64_t>(valor)) {}
    // Nothing is null.
    template <class Valor>
    Json(const std::optional<Valor>& quiza) : Json(quiza ? Json(*quiza) : Json()) {}

    static Json lista(std::initializer_list<Json> valores = {});
    // Null becomes a list with the first one; what is neither throws std::exception.
    void agregar(Json valor);
    // A member of an object, behind those that it has, or in the place of the one of that name. Null becomes
    // an object with the first one; what is neither throws std::exception.
    void poner(std::string_view nombre, Json valor);

    // The text with its line end: on one line, or as people read it. Each byte that is no UTF-8 as U+FFFD;
    // control characters, DEL and C1 as well, are escaped.
    std::string enUnaLinea() const;
    std::string conSangria() const;

   private:
    struct Exacto {};
    Json(Exacto, bool valor);
    Json(Exacto, std::int64_t valor);

    struct Valor;
    std::unique_ptr<Valor> valor_;
};

}  // namespace telvane
