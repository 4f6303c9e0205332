// The real window with the keyboard alone, and what assistive technology is told of it.
#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/ventana_e2e.h"

namespace telvane {
namespace {

using testing::IsSupersetOf;

class TecladoE2e : public VentanaE2e {
   protected:
    struct Parada {
        std::string nombre;
        std::string papel;
        Lugar lugar;
    };

    std::optional<Parada> conElFoco() const {
        // The toolkit tells the chosen tab as focused wherever the focus is.
        const auto cual =
            raiz().buscar([](const Accesible& uno) { return uno.enfocado() && uno.papel() != "page tab"; });
        if (!cual) return std::nullopt;
        return Parada{cual->nombre(), cual->papel(), cual->lugar()};
    }

    // The message box that stands on the screen has the keyboard, with this button.
    bool cajaConTeclado(const std::string& boton) const {
        return esperarA([&] {
            const auto cual = raiz().buscar(kBoton, boton);
            return cual && cual->enfocado();
        });
    }

    // What the Tab key comes by, from the first control on until it is there again.
    std::vector<Parada> vueltaDelTabulador(const std::string& primero) {
        std::vector<Parada> paradas;
        const auto boton = raiz().buscar(kBoton, primero);
        if (!boton || !ventanaConTeclado() || !boton->enfocar()) return paradas;
        if (!esperarA([&] { return boton->enfocado(); })) return paradas;
        constexpr std::size_t kDeSobra = 60;
        for (auto ahora = conElFoco(); ahora && paradas.size() < kDeSobra;) {
            paradas.push_back(*ahora);
            if (!tecla("Tab")) break;
            // The next one has the focus once this one has not.
            if (!esperarA([&] {
                    const auto otro = conElFoco();
                    return otro && !mismo(*otro, *ahora);
                }))
                break;
            ahora = conElFoco();
            if (!ahora || mismo(*ahora, paradas.front())) break;
        }
        return paradas;
    }

   private:
    static bool mismo(const Parada& una, const Parada& otra) {
        return una.nombre == otra.nombre && una.papel == otra.papel && una.lugar.x == otra.lugar.x &&
               una.lugar.y == otra.lugar.y;
    }
};

std::vector<std::string> nombres(const auto& paradas) {
    std::vector<std::string> todos;
    for (const auto& una : paradas) todos.push_back(una.nombre);
    return todos;
}

// One below the other, or beside it to the right: what follows in one panel of the window.
bool sigueALaVista(const Lugar& una, const Lugar& otra) {
    const bool mismaFila = una.y < otra.y + otra.alto && otra.y < una.y + una.alto;
    return mismaFila ? otra.x > una.x : otra.y > una.y;
}

class TecladoEnDescargaE2e : public VentanaE2e {
   protected:
    TecladoEnDescargaE2e() : VentanaE2e({"--baudios", "0", "--fallo", "descarga:bloque=2047:silencio"}) {}

    bool barra() const {
        return raiz().buscar([](const Accesible& uno) { return uno.papel() == "progress bar"; }).has_value();
    }
};

TEST_F(TecladoEnDescargaE2e, EnterGoesOnCancellingNothingAndTabReachesCancel) {
    conectar();
    ASSERT_TRUE(pulsar(kDescargar));
    ASSERT_TRUE(esperarA([&] { return barra(); }));
    ASSERT_TRUE(
        xdotool({"search", "--sync", "--name", "Estado de Comunicacion", "windowfocus", "--sync", "%1"}));
    ASSERT_TRUE(tecla("Return"));
    ASSERT_TRUE(tecla("Return"));
    // Keys arrive in their order: once the next one has done its work, those have been heard.
    ASSERT_TRUE(tecla("Tab"));
    ASSERT_TRUE(esperarA([&] {
        const auto cancelar = raiz().buscar(kBoton, "Cancel");
        return cancelar && cancelar->enfocado();
    })) << "the dialog is gone, or its button is not reached";
    ASSERT_TRUE(barra());
    ASSERT_TRUE(tecla("Return"));
    EXPECT_TRUE(esperarA([&] { return !barra(); }));
}

TEST_F(TecladoE2e, TwoEntersAtTheFirstQuestionAskOnce) {
    constexpr const char* kPregunta = "Quiere conectarse con Registrador Veltra";
    ASSERT_TRUE(responder("Su Configuracion Regional no es la apropiada", "Aceptar"));
    ASSERT_TRUE(hay(kPregunta));
    ASSERT_TRUE(cajaConTeclado("Aceptar"));
    ASSERT_TRUE(xdotool({"key", "Return", "Return"}));
    // The second one answers neither the question again nor the box behind it.
    ASSERT_TRUE(responder(" Conexion en COM 1  @ 19200 bps ", "Aceptar"));
    ASSERT_TRUE(contiene("Fecha", "/20"));
    EXPECT_TRUE(hay(kPregunta, false));
    EXPECT_TRUE(habilitado(kImportarConfiguracion));
}

TEST_F(TecladoE2e, AHeldEnterAsksOnceAndAnswersNothing) {
    constexpr const char* kBorrara = "SE BORRARAN TODOS LOS DATOS DE MEMORIA!";
    conectar();
    const auto memoria = registrador_.memoria();
    ASSERT_TRUE(pulsar("Cambiar configuracion"));
    ASSERT_TRUE(habilitado("Enviar configuracion"));
    const auto enviar = raiz().buscar(kBoton, "Enviar configuracion");
    ASSERT_TRUE(enviar && ventanaConTeclado() && enviar->enfocar());
    ASSERT_TRUE(esperarA([&] { return enviar->enfocado(); }));
    ASSERT_TRUE(xdotool({"keydown", "Return"}));
    ASSERT_TRUE(hay(kBorrara)) << "not asked, or answered";
    ASSERT_TRUE(cajaConTeclado("Cancelar"));
    // The display repeats a held key by its own clock, 660 ms after it went down and then every 40, and tells
    // nobody but the window that has the keyboard. On a slow machine the question sees fewer of them: it is
    // never answered for that.
    ASSERT_TRUE(xdotool({"sleep", "1", "keyup", "Return"}));
    // Keys arrive in their order: once the next one has done its work, those have been heard.
    ASSERT_TRUE(tecla("Tab"));
    ASSERT_TRUE(cajaConTeclado("Aceptar")) << "the question is gone";
    EXPECT_TRUE(hay(kBorrara));
    ASSERT_TRUE(tecla("Escape"));
    EXPECT_TRUE(hay(kBorrara, false));
    EXPECT_TRUE(habilitado("Cambiar configuracion"));
    EXPECT_EQ(registrador_.memoria(), memoria);
}

TEST_F(TecladoE2e, TabGoesWhereTheEyeGoesAndComesByEveryField) {
    conectar();
    const auto paradas = vueltaDelTabulador(kImportarConfiguracion);
    EXPECT_THAT(nombres(paradas), IsSupersetOf({"Usuario", "Ubicacion", "Latitud", "Longitud", "Altitud",
                                                "Hora", "Fecha", "Nro de Serie", "Datos", "Diagnostico",
                                                "Salir", "60 Minutos", "Coeficientes"}));
    // The second panel begins to the right of the first, and the foot below both: these two steps go
    // elsewhere.
    const std::set<std::string> comienzos{kDescargar, kImportarConfiguracion};
    for (std::size_t i = 1; i < paradas.size(); ++i) {
        if (comienzos.contains(paradas[i].nombre)) continue;
        EXPECT_TRUE(sigueALaVista(paradas[i - 1].lugar, paradas[i].lugar))
            << paradas[i - 1].nombre << " then " << paradas[i].nombre;
    }
    const auto primera = std::ranges::find(paradas, std::string(kDescargar), &Parada::nombre);
    ASSERT_NE(primera, paradas.end());
    EXPECT_GT(primera->lugar.x, paradas.front().lugar.x + paradas.front().lugar.ancho);
    // Every one has a name that can be said.
    for (const auto& una : paradas) EXPECT_NE(una.nombre, "") << una.papel;

    // A field that can only be read is told so, and is not written.
    const auto campo = raiz().buscar(kCampo, "Usuario");
    ASSERT_TRUE(campo.has_value());
    EXPECT_TRUE(campo->soloLectura());
    const auto antes = campo->texto();
    ASSERT_TRUE(teclear("Usuario", "otro"));
    campo->escribir("otro");
    EXPECT_EQ(campo->texto(), antes);
}

}  // namespace
}  // namespace telvane
