#include "consola/json.h"

#include <utility>

#include <nlohmann/json.hpp>

#include "platform/texto_visible.h"

namespace telvane {

using nlohmann::ordered_json;

// What the library's values assert on being moved does not throw. NOLINTNEXTLINE(bugprone-exception-escape)
struct Json::Valor {
    ordered_json json;

    std::string texto(int sangria) const {
        return controlesEscapados(json.dump(sangria, ' ', false, ordered_json::error_handler_t::replace)) +
               "\n";
    }
};

Json::Json() : valor_(std::make_unique<Valor>()) {}
Json::Json(const Json& otro) : valor_(std::make_unique<Valor>(*otro.valor_)) {}
Json::Json(Json&& otro) noexcept = default;
Json& Json::operator=(Json otro) noexcept {
    valor_ = std::move(otro.valor_);
    return *this;
}
Json::~Json() = default;

Json::Json(std::string_view texto) : valor_(new Valor{ordered_json(texto)}) {}
Json::Json(Exacto, bool valor) : valor_(new Valor{ordered_json(valor)}) {}
Json::Json(Exacto, std::int64_t valor) : valor_(new Valor{ordered_json(valor)}) {}

Json Json::lista(std::initializer_list<Json> valores) {
    Json lista;
    lista.valor_->json = ordered_json::array();
    for (const auto& valor : valores) lista.agregar(valor);
    return lista;
}

void Json::agregar(Json valor) {
    valor_->json.push_back(std::move(valor.valor_->json));
}

void Json::poner(std::string_view nombre, Json valor) {
    valor_->json[std::string(nombre)] = std::move(valor.valor_->json);
}

std::string Json::enUnaLinea() const {
    return valor_->texto(-1);
}

std::string Json::conSangria() const {
    return valor_->texto(2);
}

}  // namespace telvane
