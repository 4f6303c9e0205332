#include "data/bloques_texto.h"

#include <algorithm>

#include "data/linea_muestra.h"
#include "data/recorrido.h"

namespace telvane {

namespace {

static_assert(kFinBloquesConMuestras ==
              static_cast<std::int32_t>(BloquesTexto::kBuferes) * BloquesTexto::kPorBufer);

}  // namespace

std::size_t BloquesTexto::capacidad(Redaccion redaccion) {
    return static_cast<std::size_t>(kFinBloquesConMuestras - kPrimerBloqueConMuestras) * 2 *
           (redaccion == Redaccion::linea ? kLineaMaxima : kObjetoMaximo);
}

template <typename Escribir>
[[gnu::noinline]] Recuento BloquesTexto::llenar(const Memoria& memoria, Decodificador& decodificador,
                                                std::int32_t ultimoBloque,
                                                const std::function<void(std::int32_t)>& alBloque,
                                                Escribir escribir) {
    const bool evaporacion = decodificador.evaporacion();
    char* const inicio = texto_.get() + cabecera_.size();
    char* fin = inicio;
    std::size_t bufer = 0;
    std::int32_t ultimoDelBufer = kPorBufer - 1;
    const auto cerrarBufer = [&] {
        finales_[bufer++] = static_cast<std::size_t>(fin - inicio);
        ultimoDelBufer += kPorBufer;
    };
    const auto recuento = recorrerMuestras(
        memoria, decodificador, ultimoBloque,
        [&](BytesMuestraConst registro)
            __attribute__((always_inline)) { fin = escribir(fin, registro, evaporacion); },
        [&](std::int32_t numero) {
            if (numero == ultimoDelBufer && bufer < kBuferes) cerrarBufer();
            if (alBloque) alBloque(numero);
        });
    while (bufer < kBuferes) cerrarBufer();
    std::copy(pie_.begin(), pie_.end(), fin);
    return recuento;
}

Recuento BloquesTexto::decodificar(const Memoria& memoria, Decodificador& decodificador,
                                   std::int32_t ultimoBloque,
                                   const std::function<void(std::int32_t)>& alBloque) {
    if (!texto_) {
        texto_ =
            std::make_unique_for_overwrite<char[]>(cabecera_.size() + capacidad(redaccion_) + pie_.size());
        std::copy(cabecera_.begin(), cabecera_.end(), texto_.get());
    }
    if (redaccion_ == Redaccion::objeto) {
        return llenar(memoria, decodificador, ultimoBloque, alBloque,
                      [](char* p, BytesMuestraConst r, bool e) { return escribirObjeto(p, r, e); });
    }
    return llenar(memoria, decodificador, ultimoBloque, alBloque,
                  [](char* p, BytesMuestraConst r, bool e) { return escribirLinea(p, r, e); });
}

std::string_view BloquesTexto::bufer(std::size_t indice) const {
    const auto desde = indice == 0 ? 0 : finales_[indice - 1];
    return {lineas() + desde, finales_[indice] - desde};
}

}  // namespace telvane
