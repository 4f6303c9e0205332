// An operator who clicks and types at random on a line that fails at random, against laws that always hold:
// what is shown as sent was sent, no exchange is broken without a word, no configuration leaves without its
// question answered, and whatever happened there is a way back to a clean read.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <random>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "link/turno.h"
#include "loggerconfig/pasos_serie.h"
#include "tests/apoyo/leyes_de_reposo.h"
#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

// Boxes that stay open until the operator answers them.
class DialogosAbiertos final : public Dialogos {
   public:
    struct Caja {
        Mensaje mensaje;
        std::function<void(Boton)> listo;
    };
    void mensaje(const Mensaje& mensaje, std::function<void(Boton)> listo) override {
        cajas.push_back({mensaje, std::move(listo)});
        ++mostradas;
    }
    struct Archivo {
        bool guardar;
        std::function<void(std::optional<std::filesystem::path>)> listo;
    };
    void archivo(const PeticionArchivo& peticion,
                 std::function<void(std::optional<std::filesystem::path>)> listo) override {
        archivos.push_back({peticion.guardar, std::move(listo)});
        ++mostradas;
    }
    void abrirDocumento(const std::filesystem::path&, std::function<void()>) override {}
    bool abiertos() const { return !cajas.empty() || !archivos.empty(); }

    std::vector<Caja> cajas;
    std::vector<Archivo> archivos;
    std::size_t mostradas = 0;
};

// The simulated ports, with somebody who looks at each byte that the program writes.
class PuertosVigilados final : public Puertos {
   public:
    PuertosVigilados(Puertos& puertos, std::function<void(std::uint8_t)> alEscribir,
                     std::function<void()> alCerrar)
        : puertos_(puertos), alEscribir_(std::move(alEscribir)), alCerrar_(std::move(alCerrar)) {}
    bool existe(int numero) const override { return puertos_.existe(numero); }
    std::unique_ptr<PuertoSerie> abrir(int numero, const AjustesLinea& ajustes,
                                       std::function<void()> alDespertar) override {
        return std::make_unique<Vigilado>(puertos_.abrir(numero, ajustes, std::move(alDespertar)),
                                          alEscribir_, alCerrar_);
    }

   private:
    class Vigilado final : public PuertoSerie {
       public:
        Vigilado(std::unique_ptr<PuertoSerie> puerto, const std::function<void(std::uint8_t)>& alEscribir,
                 const std::function<void()>& alCerrar)
            : puerto_(std::move(puerto)), alEscribir_(alEscribir), alCerrar_(alCerrar) {}
        Vigilado(const Vigilado&) = delete;
        Vigilado& operator=(const Vigilado&) = delete;
        ~Vigilado() override { alCerrar_(); }
        void escribir(std::span<const std::uint8_t> bytes) override {
            for (const auto byte : bytes) alEscribir_(byte);
            puerto_->escribir(bytes);
        }
        std::size_t leer(std::span<std::uint8_t> destino) override { return puerto_->leer(destino); }
        void umbral(int bytes) override { puerto_->umbral(bytes); }
        void vaciarEntrada() override { puerto_->vaciarEntrada(); }
        void dtr(bool alto) override { puerto_->dtr(alto); }
        void rts(bool alto) override { puerto_->rts(alto); }
        void romper(bool encendido) override { puerto_->romper(encendido); }
        std::vector<int> sucesosDeLinea() override { return puerto_->sucesosDeLinea(); }
        void vigilarLinea(bool si) override { puerto_->vigilarLinea(si); }

       private:
        std::unique_ptr<PuertoSerie> puerto_;
        const std::function<void(std::uint8_t)>& alEscribir_;
        const std::function<void()>& alCerrar_;
    };

    Puertos& puertos_;
    std::function<void(std::uint8_t)> alEscribir_;
    std::function<void()> alCerrar_;
};

class Operador {
   public:
    explicit Operador(unsigned semilla) : azar_(semilla) {
        puertos_.conectar(1, MaquinaRegistrador(memoriaSimulada(Clima())));
        std::ofstream(carpeta_ / "corta.rgt") << std::string(64, '\x55');
        observacion_ =
            forma_.observar({.alCambiar = [this](Control& control, Que que) { alCambiar(control, que); },
                             .alCambiarForma = {},
                             .alImprimir =
                                 [this](const std::string& linea) {
                                     ++palabras_;
                                     anotar("imprime " + linea);
                                 }});
    }

    void empezar() {
        inicio_.cargar();
        contestar(Boton::aceptar);
        correr(6s);
        while (dialogos_.abiertos()) contestar(Boton::aceptar);
        correr(6s);
        EXPECT_EQ(forma_.Text2.text(), puertos_.maquina(1).texto(CampoTexto::usuario));
    }

    void actuar() {
        leyes();
        if (dado(4) == 0) estropear();
        if (dialogos_.abiertos()) {
            // The box is in front of everything.
            if (dado(3) != 0) contestar(dado(3) == 0 ? Boton::cancelar : Boton::aceptar);
        } else if (inicio_.progress.mostrado() && dado(4) == 0) {
            cancelar();
        } else {
            hacerAlgo();
        }
        correr(milliseconds(dado(5) == 0 ? dado(4000) : dado(5) == 0 ? 0 : dado(400)));
    }

    // Whatever happened, there is a way back.
    void volver() {
        puertos_.manipular(1, {});
        puertos_.reponer(1);
        // What was held back may begin anew; and the logger gives up what was cancelled.
        for (int i = 0, quietas = 0; i < 100 && quietas < 4; ++i, quietas = enReposo() ? quietas + 1 : 0) {
            while (dialogos_.abiertos()) contestar(Boton::cancelar);
            if (inicio_.progress.mostrado()) cancelar();
            if (forma_.Command4.caption() == "PARAR") pulsar(forma_.Command4);
            correr(3s);
        }
        EXPECT_TRUE(enReposo()) << historia();
        // Not disabled by a question that was declined, as it may be.
        forma_.Command1.enabled = true;
        pulsar(forma_.Command1);
        for (int i = 0; i < 20; ++i) {
            while (dialogos_.abiertos()) contestar(Boton::aceptar);
            correr(3s);
        }
        const auto& maquina = puertos_.maquina(1);
        EXPECT_EQ(forma_.Text2.text(), maquina.texto(CampoTexto::usuario)) << historia();
        EXPECT_EQ(forma_.Label4.caption(), "Nro  : " + maquina.serie()) << historia();
        EXPECT_TRUE(forma_.configuracion.enabled()) << historia();
        EXPECT_FALSE(puertos_.abierto(1)) << historia();
        EXPECT_TRUE(fallos_.empty()) << fallos_.front() << historia();
    }

   private:
    unsigned dado(unsigned caras) { return std::uniform_int_distribution<unsigned>(0, caras - 1)(azar_); }
    void anotar(const std::string& que) {
        historia_.push_back(
            fmt::format("{:>10.3f} {}", std::chrono::duration<double>(ahora()).count() - 3600, que));
    }
    std::string historia() const {
        auto texto = fmt::format("\nat {:.3f}\n", std::chrono::duration<double>(ahora()).count() - 3600);
        const auto desde = historia_.size() > 60 ? historia_.size() - 60 : 0;
        for (auto i = desde; i < historia_.size(); ++i) texto += historia_[i] + "\n";
        return texto;
    }
    nanoseconds ahora() const { return bucle_.reloj().monotono(); }
    void correr(nanoseconds cuanto) {
        const auto nunca = [this] {
            trasCadaSuceso();
            return false;
        };
        static_cast<void>(bucle_.correrHasta(nunca, cuanto));
    }
    bool enReposo() const {
        return inicio_.operacionesEnCurso() == 0 && !dialogos_.abiertos() && !inicio_.progress.mostrado() &&
               forma_.Command4.caption() != "PARAR" && !bucle_.enPausa();
    }

    void pulsar(Control& control) {
        anotar("pulsa " + std::string(control.nombre()));
        inicio_.pulsar(control);
    }
    void cancelar() {
        ++palabras_;
        pulsar(inicio_.progress.Command45);
    }
    void contestar(Boton boton) {
        ++palabras_;
        if (!dialogos_.archivos.empty()) {
            const auto archivo = std::move(dialogos_.archivos.back());
            dialogos_.archivos.pop_back();
            std::optional<std::filesystem::path> ruta;
            if (boton == Boton::aceptar && dado(2) == 0)
                ruta = carpeta_ / (archivo.guardar ? "datos.csv" : "corta.rgt");
            anotar(ruta ? "elige un archivo" : "cancela el archivo");
            bucle_.entregar([listo = archivo.listo, ruta] { listo(ruta); });
            return;
        }
        const auto caja = std::move(dialogos_.cajas.back());
        dialogos_.cajas.pop_back();
        anotar(fmt::format("contesta {} a {}", static_cast<int>(boton), caja.mensaje.texto));
        const bool borra = caja.mensaje.texto.starts_with("SE BORRARAN");
        // A reading that went on under the question has ended edit mode, and the permission with it.
        if (borra) permisos_ = boton == Boton::aceptar && !forma_.Text2.locked() ? 1 : 0;
        const auto respuesta = caja.mensaje.botones == Botones::aceptar ? Boton::aceptar
                               : caja.mensaje.botones == Botones::siNo  ? Boton::no
                                                                        : boton;
        bucle_.entregar([listo = caja.listo, respuesta] { listo(respuesta); });
    }

    void hacerAlgo() {
        const std::array<Control*, 10> botones = {
            &forma_.Command1, &forma_.configuracion, &forma_.Command2,  &forma_.Command3,
            &forma_.Command4, &forma_.Command13,     &forma_.Command33, &forma_.Command43,
            &forma_.Command5, &inicio_.coef.Command1};
        switch (dado(10)) {
            case 0:
                inicio_.teclear(forma_.Text10, 13);
                anotar("Enter");
                break;
            case 1:
                teclear();
                break;
            case 2:
                pulsar(*forma_.opciones()[dado(6)]);
                break;
            case 3:
                pulsar(forma_.Check1);
                break;
            case 4: {
                auto* campo = forma_.camposEdicion()[dado(7)];
                inicio_.cambiar(*campo, fmt::format("{}", dado(100000)));
                break;
            }
            case 5:
                inicio_.cambiar(forma_.fecha1, dado(5) == 0 ? "31/02/2024" : "31/12/2024");
                inicio_.cambiar(forma_.MaskEdBox2, dado(5) == 0 ? "25:00:00" : "10:20:30");
                inicio_.salirDe(forma_.MaskEdBox2);
                break;
            default: {
                auto* boton = botones[dado(static_cast<unsigned>(botones.size()))];
                // A box that came up takes the clicks that follow.
                for (unsigned i = 0; i <= dado(3) && !dialogos_.abiertos(); ++i) pulsar(*boton);
                break;
            }
        }
    }
    void teclear() {
        const int tecla = static_cast<int>('0' + dado(12));
        if (inicio_.teclear(forma_.Text10, tecla) == 0 || forma_.Text10.text().size() == 8) return;
        inicio_.cambiar(forma_.Text10, forma_.Text10.text() + static_cast<char>(tecla));
    }

    void estropear() {
        puertos_.reponer(1);
        const auto donde = dado(2) == 0 ? dado(4) : dado(120);
        const auto que = dado(9);
        const auto demora = milliseconds(dado(3) == 0 ? 1200 + dado(2000) : dado(900));
        anotar(fmt::format("fallo {} en {}", que, donde));
        if (que >= 7) {
            puertos_.manipular(1, {});
            return;
        }
        puertos_.manipular(1, [=](const ByteSaliente& saliente) {
            auto efecto = Efecto::pasar(saliente.byte);
            if (saliente.indice != donde) return efecto;
            if (que == 0) efecto.bytes.clear();
            if (que == 1) efecto.bytes.push_back(saliente.byte);
            if (que == 2) efecto.demora = demora;
            if (que == 3) efecto.callar = true;
            if (que == 4) efecto.colgar = true;
            if (que == 5) efecto.errorEscritura = true;
            if (que == 6) efecto.bytes[0] ^= 0x0F;
            return efecto;
        });
    }

    // ---- The laws.

    void alEscribir(std::uint8_t byte) {
        auto& maquina = puertos_.maquina(1);
        if (byte == kSonda) comienza(maquina);
        if (maquina.intercambio() == Intercambio::eleccion && byte == 0x96) {
            EXPECT_GT(permisos_, 0) << "a configuration leaves without its question" << historia();
            --permisos_;
        }
        escritos_.push_back(byte);
        ultimoEscrito_ = ahora();
    }
    // A byte that begins something, while the logger was in the middle of something else a moment ago.
    void comienza(const MaquinaRegistrador& maquina) {
        const bool enMedio =
            maquina.intercambio() != Intercambio::reposo && maquina.intercambio() != Intercambio::eleccion;
        // The last byte of a whole exchange may be on its way to the logger still.
        const bool detenido = ahora() - ultimoByte_ >= Turno::kQuietud - 10ms;
        // Closed at this moment: not one that had ended before, which the logger knows nothing of.
        if (enMedio && !detenido && cierre_ == ahora() && ahora() - ultimoEscrito_ > 2ms) {
            EXPECT_NE(palabras_, palabrasAlEmpezar_)
                << "an exchange was broken without a word: " << static_cast<int>(maquina.intercambio())
                << " at byte " << maquina.contador() << historia();
        }
        palabrasAlEmpezar_ = palabras_;
        anotar("pide un marco o despierta");
    }
    void alCambiar(Control& control, Que que) {
        if (que == Que::caption) anotar(std::string(control.nombre()) + ": " + control.caption());
        // Who stopped it himself is told nothing when the next exchange takes its port.
        if (&control == &forma_.Command4 && que == Que::caption && control.caption() != "PARAR") ++palabras_;
        if (&control != &forma_.Label1 || que != Que::caption) return;
        const std::string rotulo = "Nº Enviado  ";
        const auto texto = control.caption();
        if (!texto.starts_with(rotulo)) return;
        const auto serie = empacarSerie(std::string_view(texto).substr(rotulo.size()));
        std::vector<std::uint8_t> esperados(serie.begin(), serie.end());
        esperados.push_back(serie.back());
        ASSERT_GE(escritos_.size(), esperados.size());
        EXPECT_TRUE(std::equal(esperados.rbegin(), esperados.rend(), escritos_.rbegin()))
            << "shown and not sent: " << texto << historia();
    }
    void trasCadaSuceso() {
        const auto cuantos = puertos_.emitidos(1).size();
        if (cuantos == emitidos_) return;
        emitidos_ = cuantos;
        ultimoByte_ = ahora();
    }
    Vista vista() {
        Vista v;
        v.delante = dialogos_.abiertos();
        v.progreso = inicio_.progress.mostrado();
        v.procesado = std::any_of(dialogos_.cajas.begin(), dialogos_.cajas.end(), [](const auto& caja) {
            return caja.mensaje.texto == "El archivo se proceso con exito";
        });
        v.conectar = forma_.Command1.enabled();
        v.leer = forma_.configuracion.enabled();
        v.cambiar = forma_.Command2.enabled();
        v.enviar = forma_.Command3.enabled();
        v.enLinea = forma_.Command4.enabled();
        v.descargar = forma_.Command13.enabled();
        v.exportar = forma_.Command33.enabled();
        v.abrir = forma_.Command43.enabled();
        v.salir = forma_.salir.enabled();
        v.serie = forma_.Text10.enabled();
        v.parar = forma_.Command4.caption() == "PARAR";
        v.lecturas = forma_.Text60.visible();
        v.ajustar = forma_.Check1.visible();
        v.quienAjusta = forma_.Label3.visible();
        const auto campos = forma_.camposEdicion();
        v.editables = static_cast<int>(
            std::count_if(campos.begin(), campos.end(), [](const auto* c) { return !c->locked(); }));
        const auto opciones = forma_.opciones();
        v.opciones = static_cast<int>(
            std::count_if(opciones.begin(), opciones.end(), [](const auto* c) { return c->visible(); }));
        v.rotuloConectar = forma_.Command1.caption();
        v.rotuloSerie = forma_.Label1.caption();
        return v;
    }
    void leyes() {
        const auto v = vista();
        reposo_.mirar(v);
        EXPECT_EQ(reposo_.rota(v), "") << historia();
        if (!v.delante && inicio_.operacionesEnCurso() == 0 && !bucle_.enPausa()) {
            EXPECT_EQ(reposo_.rotaEnReposo(v), "") << historia();
        }
        const auto preguntas =
            std::count_if(dialogos_.cajas.begin(), dialogos_.cajas.end(),
                          [](const auto& caja) { return caja.mensaje.botones == Botones::aceptarCancelar; });
        EXPECT_LE(preguntas, 1) << "questions are stacked" << historia();
    }

    std::mt19937 azar_;
    LeyesDeReposo reposo_;
    std::vector<std::string> historia_;
    std::vector<std::uint8_t> escritos_;
    std::size_t palabras_ = 0;  // boxes, printed lines, cancelled downloads, live data that was stopped
    std::size_t palabrasAlEmpezar_ = 0;
    std::size_t emitidos_ = 0;
    nanoseconds ultimoByte_{0};
    nanoseconds ultimoEscrito_{0};
    nanoseconds cierre_{0};
    int permisos_ = 0;  // questions answered with yes and not used yet

    CarpetaTemporal carpeta_;
    BuclePrueba bucle_;
    DialogosAbiertos dialogos_;
    RegistroRegionalPrueba registro_;
    PuertosSimulados puertos_{bucle_, bucle_.reloj(), kBaudios};
    PuertosVigilados vigilados_{puertos_,
                                [this](std::uint8_t byte) {
                                    trasCadaSuceso();
                                    alEscribir(byte);
                                },
                                [this] { cierre_ = ahora(); }};
    std::vector<std::string> fallos_;
    Inicio inicio_{{.bucle = bucle_,
                    .reloj = bucle_.reloj(),
                    .puertos = vigilados_,
                    .dialogos = dialogos_,
                    .registro = registro_,
                    .terminar = [](int) {},
                    .informeDeFallo = [this](const std::string& que) { fallos_.push_back(que); },
                    .carpetaBase = carpeta_.ruta() / "base"}};
    FormaInicio& forma_ = inicio_.forma;
    Formulario::Observacion observacion_;
};

// TELVANE_AZAR=first-last tries these instead.
std::pair<unsigned, unsigned> semillas() {
    unsigned desde = 1;
    unsigned hasta = 60;
    if (const char* cuales = std::getenv("TELVANE_AZAR")) std::sscanf(cuales, "%u-%u", &desde, &hasta);
    return {desde, hasta};
}

TEST(OperadorAlAzar, WhateverHeDoesTheLawsHold) {
    const auto [desde, hasta] = semillas();
    for (unsigned semilla = desde; semilla <= hasta && !testing::Test::HasFailure(); ++semilla) {
        SCOPED_TRACE(fmt::format("TELVANE_AZAR={}-{}", semilla, semilla));
        Operador operador(semilla);
        operador.empezar();
        for (int i = 0; i < 200 && !testing::Test::HasFailure(); ++i) operador.actuar();
        if (!testing::Test::HasFailure()) operador.volver();
    }
}

}  // namespace
}  // namespace telvane
