// What an archive exports of one image is what its conversion writes: there is one decoder.
#include <algorithm>
#include <random>
#include <set>
#include <sstream>

#include <rapidcheck.h>

#include "calidad/marcador.h"
#include "data/conversion.h"
#include "historico/exportacion_archivo.h"
#include "tests/historico/banco_historico.h"

namespace telvane {
namespace {

constexpr FechaHora kMomento{.anio = 2026, .mes = 3, .dia = 7};

using Azar = std::mt19937;
Azar azarCualquiera() {
    return Azar(*rc::gen::arbitrary<std::uint32_t>());
}
int entre(Azar& azar, int desde, int hasta) {
    return std::uniform_int_distribution(desde, hasta)(azar);
}

// Any values in any channel, the bytes that no channel has included.
BytesMuestra registroAlAzar(Azar& azar, Instante instante) {
    BytesMuestra r{};
    std::generate(r.begin(), r.end(), [&] { return static_cast<std::uint8_t>(entre(azar, 0, 255)); });
    escribirSello(r, instante);
    return r;
}

ImagenPrueba imagenAlAzar(Azar& azar) {
    constexpr std::array<const char*, 4> kSeries = {"02080050", "03080050", "99999999", "10000001"};
    ImagenPrueba imagen(kSeries[static_cast<std::size_t>(entre(azar, 0, 3))]);
    return imagen.reloj(kInicio + std::chrono::hours(entre(azar, 0, 9999)))
        .texto(4, "Finca \xD1orte" + std::to_string(entre(azar, 0, 999)));
}

// Stamps that rise over years; between the samples, slots that were never written.
std::vector<std::uint8_t> imagenQueSube(Azar& azar) {
    auto imagen = imagenAlAzar(azar);
    auto instante = momento(2000 + entre(azar, 0, 90), 1, 1);
    const int ranuras = entre(azar, 0, 400);
    for (int ranura = 0; ranura < ranuras; ++ranura) {
        instante += std::chrono::seconds(entre(azar, 1, entre(azar, 0, 9) == 0 ? 500'000 : 3600));
        if (entre(azar, 0, 9) == 0) continue;
        imagen.poner(static_cast<std::size_t>(ranura), registroAlAzar(azar, instante));
    }
    return imagen.bytes();
}

// Stamps that repeat and run backwards, records twice, slots of any bytes.
std::vector<std::uint8_t> imagenCualquiera(Azar& azar) {
    auto imagen = imagenAlAzar(azar);
    BytesMuestra registro{};
    const int ranuras = entre(azar, 0, 400);
    for (int ranura = 0; ranura < ranuras; ++ranura) {
        if (entre(azar, 0, 9) != 0) {
            registro = registroAlAzar(azar, kInicio + std::chrono::minutes(entre(azar, 0, 200)));
        }
        if (entre(azar, 0, 9) == 0) {
            registro[static_cast<std::size_t>(entre(azar, 0, 31))] =
                static_cast<std::uint8_t>(entre(azar, 0, 255));
        }
        imagen.poner(static_cast<std::size_t>(ranura), registro);
    }
    return imagen.bytes();
}

std::set<std::string> lineasDe(const std::string& texto) {
    std::set<std::string> lineas;
    for (std::size_t desde = 0; desde < texto.size();) {
        const auto fin = std::min(texto.find('\n', desde), texto.size() - 1);
        lineas.insert(texto.substr(desde, fin + 1 - desde));
        desde = fin + 1;
    }
    return lineas;
}

class Exportacion : public testing::TestWithParam<TipoAlmacen> {
   protected:
    std::unique_ptr<Almacen> con(const std::vector<std::uint8_t>& imagen) {
        auto almacen = almacenes.nuevo();
        Archivo(*almacen).incorporar(imagen, {}, {});
        return almacen;
    }
    static std::string exportada(Almacen& almacen, Formato formato) {
        PeticionTabla peticion;
        peticion.formato = formato;
        return exportada(almacen, peticion);
    }
    static std::string exportada(Almacen& almacen, PeticionTabla peticion) {
        Lectura lectura(almacen);
        std::string texto;
        peticion.momento = kMomento;
        escribirTabla(lectura, lectura.estaciones().front(), peticion,
                      [&](std::string_view bytes) { texto += bytes; });
        return texto;
    }
    static std::string convertida(const std::vector<std::uint8_t>& imagen, Formato formato) {
        Conversor conversor;
        const auto archivo = conversor.convertir(imagen, formato, Perfil::ampliado, kMomento);
        return std::string(archivo.bytes());
    }

    Almacenes almacenes{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(En, Exportacion, testing::Values(TipoAlmacen::sqlite, TipoAlmacen::postgresql),
                         nombreDeTipoAlmacen);

TEST_P(Exportacion, OfRisingStampsIsTheConversionByteForByte) {
    EXPECT_TRUE(rc::check([&] {
        auto azar = azarCualquiera();
        const auto imagen = imagenQueSube(azar);
        const auto almacen = con(imagen);
        for (const auto& fila : kFormatos) {
            RC_ASSERT(exportada(*almacen, fila.formato) == convertida(imagen, fila.formato));
        }
    }));
}

TEST_P(Exportacion, OfAnyImageHasTheLinesOfTheConversion) {
    EXPECT_TRUE(rc::check([&] {
        auto azar = azarCualquiera();
        const auto imagen = imagenCualquiera(azar);
        const auto almacen = con(imagen);
        for (const auto& fila : kFormatos) {
            RC_ASSERT(lineasDe(exportada(*almacen, fila.formato)) ==
                      lineasDe(convertida(imagen, fila.formato)));
        }
    }));
}

TEST_P(Exportacion, OfAnImageThatIsCutHasTheLinesOfTheConversion) {
    const auto entera = ImagenPrueba().serie(0, 0, 50).bytes();
    for (const std::size_t largo : {4, 383, 384, 385, 415, 416, 1000, 1023}) {
        const std::vector<std::uint8_t> imagen(entera.begin(),
                                               entera.begin() + static_cast<std::ptrdiff_t>(largo));
        const auto almacen = con(imagen);
        EXPECT_EQ(lineasDe(exportada(*almacen, Formato::csv)), lineasDe(convertida(imagen, Formato::csv)))
            << largo;
    }
}

// Lines of samples alone.
std::vector<std::string> muestrasDe(const std::string& texto) {
    std::vector<std::string> lineas;
    std::istringstream entrada(texto);
    for (std::string linea; std::getline(entrada, linea);) {
        if (linea.size() > 10 && linea[2] == '/' && linea[5] == '/' && linea[10] == ',')
            lineas.push_back(linea);
    }
    return lineas;
}

// So many that images tell them, of weather that jumps, leaves its range, stands still and stops.
std::vector<ImagenPrueba> imagenesDeMuchoTiempo() {
    Azar azar(7);
    std::vector<ImagenPrueba> imagenes;
    for (int i = 0; i < 3; ++i) {
        auto imagen = ImagenPrueba().reloj(kInicio + std::chrono::days(i)).serie(0, i * 90'000, 8'000);
        for (int veces = 0; veces < 100; ++veces) {
            const auto ranura = entre(azar, 0, 7'999);
            const auto instante =
                kInicio + std::chrono::minutes(i * 90'000 + ranura * 10 + entre(azar, 0, 9));
            imagen.poner(static_cast<std::size_t>(ranura), registroAlAzar(azar, instante));
        }
        imagenes.push_back(imagen);
    }
    return imagenes;
}

TEST_P(Exportacion, MarksAreThoseOfTheWholeSeriesWhateverTellsTheSamples) {
    const auto almacen = almacenes.nuevo();
    const auto imagenes = imagenesDeMuchoTiempo();
    for (const auto& imagen : imagenes) Archivo(*almacen).incorporar(imagen.bytes(), {}, {});
    for (const bool conConflicto : {false, true}) {
        if (conConflicto) {
            auto otra = imagenes[1];
            Archivo(*almacen).incorporar(otra.poner(4'000, registroDeMinuto(90'000 + 40'000, 1)).bytes(), {},
                                         {});
        }
        std::vector<std::string> marcas;
        std::size_t marcadas = 0;
        Marcador marcador(limitesUsuales(), [&](const Juzgada& j) {
            marcas.push_back(j.marcas.texto());
            if (!j.marcas.ninguna()) ++marcadas;
        });
        {
            Lectura lectura(*almacen);
            lectura.recorrer(lectura.estaciones().front(), {}, Cuales::lasQueCuentan, [&](const auto& m) {
                marcador.agregar({m.instante, medidas(m.registro), m.conflicto});
            });
        }
        marcador.terminar();
        auto esperadas = muestrasDe(exportada(*almacen, Formato::csv));
        ASSERT_EQ(esperadas.size(), marcas.size());
        EXPECT_GT(marcadas, 300U);
        for (std::size_t i = 0; i < marcas.size(); ++i)
            esperadas[i].insert(esperadas[i].size() - 1, ',' + marcas[i]);
        PeticionTabla peticion;
        peticion.calidad = limitesUsuales();
        EXPECT_TRUE(muestrasDe(exportada(*almacen, peticion)) == esperadas) << conConflicto;
        peticion.periodo = {.desde = kInicio + std::chrono::minutes(79'000),
                            .hasta = kInicio + std::chrono::minutes(131'000)};
        PeticionTabla sola = peticion;
        sola.calidad.reset();
        const auto delPeriodo = muestrasDe(exportada(*almacen, peticion));
        ASSERT_EQ(delPeriodo.size(), muestrasDe(exportada(*almacen, sola)).size());
        EXPECT_FALSE(std::ranges::search(esperadas, delPeriodo).empty());
    }
}

}  // namespace
}  // namespace telvane
