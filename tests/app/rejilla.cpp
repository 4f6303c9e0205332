#include "tests/app/rejilla.h"

#include <algorithm>

#include "simulator/fallo.h"

namespace telvane {

using namespace std::chrono_literals;

namespace {

// Longer than the longest delay of the grid and the logger's patience after it.
constexpr auto kAsentarse = 7s;
constexpr auto kEntreMarcos = 20ms;

}  // namespace

Rejilla::Rejilla(int baudios)
    : Banco(baudios, Perfil::estricto,
            [](auto& suBucle, auto& lineas) { return redDeRejilla(suBucle, lineas, 1); }) {
    observacion_ =
        forma.observar({.alCambiar = {}, .alCambiarForma = {}, .alImprimir = [this](const auto& linea) {
                            const bool perdida = linea == "el dispositivo desapareció" ||
                                                 linea == "error al leer del puerto" ||
                                                 linea == "error al escribir en el puerto" ||
                                                 linea == "el puerto no acepta más datos" ||
                                                 linea.starts_with("se cortó la conexión con 127.") ||
                                                 linea.find(" rechaza la conexión") != std::string::npos;
                            const bool silencio = linea.starts_with("el registrador dejó de contestar: ");
                            (perdida ? perdidas : silencio ? silencios : impresas).push_back(linea);
                        }});
}

void Rejilla::SetUp() {
    conectar();
    dialogos.responderSiempre(Boton::aceptar);
    dialogos.responderArchivoSiempre(std::nullopt);
}

void Rejilla::enReposo() {
    ASSERT_EQ(inicio.operacionesEnCurso(), 0u);
    // What an earlier operation has its own way back to.
    forma.Command33.enabled = true;
    forma.Command1.enabled = false;
    dialogos.olvidar();
    impresas.clear();
    perdidas.clear();
    silencios.clear();
    puertos.olvidarTrafico(1);
    corridas.otra();
    ASSERT_FALSE(abierto());
    ASSERT_EQ(habilitados(), "Command2 Command4 Command13 Command33 Command43 configuracion Text10");
}

std::string Rejilla::armar(std::string_view operacion, std::size_t lugar, std::string_view fallo) {
    const auto texto = fmt::format("{}:byte={}:{}", operacion, lugar, fallo);
    puertos.manipular(1, [plan = PlanDeFallos({Fallo::leer(texto)}),
                          ritmo = conRitmo](const ByteSaliente& saliente) mutable {
        auto efecto = plan(saliente);
        if (ritmo && saliente.intercambio == Intercambio::reposo && saliente.indice == 0)
            efecto.demora += kEntreMarcos;
        return efecto;
    });
    return texto;
}

void Rejilla::asentar() {
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }, 2min));
    bucle.avanzar(kAsentarse);
}

const Fin& Rejilla::finDe(std::span<const Regla> reglas, std::size_t lugar, ClaseDeDano clase) {
    const auto regla = std::find_if(reglas.begin(), reglas.end(), [&](const Regla& r) {
        return lugar >= r.desde && lugar <= r.hasta && (r.clases & clase) != 0;
    });
    if (regla == reglas.end()) throw std::logic_error("no rule for this fault at this place");
    return *regla->fin;
}

std::string Rejilla::habilitados() const {
    std::string nombres;
    for (const auto* control : {&forma.Command2, &forma.Command3, &forma.Command4, &forma.Command13,
                                &forma.Command33, &forma.Command43, &forma.configuracion, &forma.Text10}) {
        if (!control->enabled()) continue;
        if (!nombres.empty()) nombres += ' ';
        nombres += control->nombre();
    }
    return nombres;
}

void Rejilla::esperar(const Fin& fin) const {
    SCOPED_TRACE(fin.nombre);
    EXPECT_EQ(dialogos.textos(), std::vector<std::string>(fin.mensajes.begin(), fin.mensajes.end()));
    EXPECT_EQ(habilitados(), fin.pantalla.habilitados);
    EXPECT_EQ(forma.Command1.enabled(), fin.pantalla.ofrece);
    if (fin.pantalla.ofrece) {
        EXPECT_EQ(forma.Command1.caption(), kOfrecer);
    }
    EXPECT_EQ(abierto(), fin.pantalla.abierto);
    EXPECT_LE(perdidas.size(), 1u) << "a port that goes away is told once";
    EXPECT_LE(silencios.size(), fin.pantalla.abierto ? 1U : 0U)
        << "only an exchange that stands still is silent";
    EXPECT_TRUE(fallos.empty()) << fallos.front();
    EXPECT_TRUE(terminaciones.empty());
}

void Rejilla::reponer() {
    puertos.manipular(1, {});
    puertos.reponer(1);
    if (forma.Command1.enabled() && forma.Command1.caption() == kOfrecer) pulsarYAsentar(forma.Command1);
    dialogos.olvidar();
    impresas.clear();
    perdidas.clear();
    silencios.clear();
}

void Rejilla::lecturaLimpia() {
    pulsarYAsentar(forma.configuracion);
    EXPECT_TRUE(dialogos.textos().empty());
    EXPECT_TRUE(impresas.empty());
    EXPECT_FALSE(abierto());
    EXPECT_EQ(forma.Text2.text(), puertos.maquina(1).texto(CampoTexto::usuario));
    EXPECT_EQ(forma.Text7.text(), puertos.maquina(1).texto(CampoTexto::altitud));
    EXPECT_EQ(forma.Label4.caption(), "Nro  : " + puertos.maquina(1).serie());
}

}  // namespace telvane
