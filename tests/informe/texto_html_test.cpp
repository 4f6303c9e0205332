// What a number of the report looks like.
#include "informe/texto_html.h"

#include <gtest/gtest.h>

namespace telvane::informe {
namespace {

// Of every mean of two to a day's samples: the sum and the count are whole, and tell what is right.
TEST(Numero, IsRoundedHalfAwayFromZeroOfItsDecimalValue) {
    for (const auto& [decimalesDelValor, decimales] : {std::pair(1, 1), {2, 2}, {1, 0}}) {
        std::int64_t unidad = 1;
        for (int i = 0; i < decimalesDelValor; ++i) unidad *= 10;
        std::int64_t paso = unidad;
        for (int i = 0; i < decimales; ++i) paso /= 10;
        for (std::int64_t valores = 2; valores <= 144; ++valores) {
            for (std::int64_t suma = -1000; suma <= 1000; ++suma) {
                const auto absoluta = suma < 0 ? -suma : suma;
                const auto entero = (2 * absoluta + paso * valores) / (2 * paso * valores);
                const auto media =
                    static_cast<double>(suma) / static_cast<double>(valores) / static_cast<double>(unidad);
                ASSERT_EQ(numero(media, decimales), numero(suma < 0 ? -entero : entero, decimales))
                    << suma << " / " << valores;
            }
        }
    }
}

}  // namespace
}  // namespace telvane::informe
