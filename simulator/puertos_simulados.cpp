#include "simulator/puertos_simulados.h"

#include <algorithm>
#include <deque>
#include <stdexcept>
#include <utility>

#include "simulator/linea_simulada.h"

namespace telvane {

namespace {

using Momento = LineaSimulada::Momento;

}  // namespace

// One port number: the wire with its logger, and the opening that listens to it.
class PuertosSimulados::Puesto {
   public:
    Puesto(Bucle& bucle, const Reloj& reloj) : bucle_(bucle), reloj_(reloj) {}

    std::optional<LineaSimulada> linea;  // none: nothing at the other end
    std::optional<MotivoPuerto> rehusa;
    std::vector<std::uint8_t> escritos;
    std::vector<std::uint8_t> emitidos;
    AjustesLinea ajustes;
    std::size_t aperturas = 0;
    bool fallaEscritura = false;
    Puerto* abierto = nullptr;

    Momento ahora() const { return reloj_.monotono(); }
    Bucle& bucle() { return bucle_; }
    LineaSimulada& laLinea() {
        if (!linea) throw std::out_of_range("no logger at this port");
        linea->alDia(ahora());
        return *linea;
    }
    void cambio() const;

   private:
    Bucle& bucle_;
    const Reloj& reloj_;
};

// An opening. Its alarm is a hint only: the logger is brought up to date whenever somebody asks, so that a
// pause of the loop holds back the news and not the logger.
class PuertosSimulados::Puerto final : public PuertoSerie {
   public:
    Puerto(Puesto& puesto, std::function<void()> alDespertar)
        : puesto_(puesto), alDespertar_(std::move(alDespertar)) {
        puesto_.abierto = this;
        vaciarEntrada();
    }
    Puerto(const Puerto&) = delete;
    Puerto& operator=(const Puerto&) = delete;
    ~Puerto() override {
        recoger();
        puesto_.abierto = nullptr;
    }

    void escribir(std::span<const std::uint8_t> bytes) override;
    std::size_t leer(std::span<std::uint8_t> destino) override;
    void umbral(int bytes) override {
        umbral_ = static_cast<std::size_t>(bytes);
        visto_ = false;
        programar();
    }
    void vaciarEntrada() override {
        recoger();
        esperan_.clear();
        nuevos_ = false;
        programar();
    }
    void dtr(bool alto) override { puesto_.ajustes.dtr = alto; }
    void rts(bool alto) override { puesto_.ajustes.rts = alto; }
    void romper(bool) override {}
    std::vector<int> sucesosDeLinea() override {
        recoger();
        return std::exchange(sucesos_, {});
    }
    void vigilarLinea(bool si) override {
        vigilaLinea_ = si;
        programar();
    }

    void programar();

   private:
    void pasar(std::span<const std::uint8_t> bytes);
    void recoger();
    void tomar(const LineaSimulada::Llegada& llegada);
    bool hayQueDespertar() const;
    std::optional<Momento> cuandoMirar() const;
    void sonar();

    Puesto& puesto_;
    std::function<void()> alDespertar_;
    Bucle::Asidero alarma_;
    std::size_t umbral_ = 1;
    bool vigilaLinea_ = false;
    // What has arrived: a byte, or nullopt where reading fails once.
    std::deque<std::optional<std::uint8_t>> esperan_;
    std::vector<int> sucesos_;
    bool colgado_ = false;
    bool nuevos_ = false;  // arrived since the owner was last woken
    bool visto_ = true;    // the threshold has not been lowered under what waits since then
    bool sucesoNuevo_ = false;
    bool colgadoAvisado_ = false;
};

// Something was put on the wire from outside.
void PuertosSimulados::Puesto::cambio() const {
    if (abierto) abierto->programar();
}

void PuertosSimulados::Puerto::escribir(std::span<const std::uint8_t> bytes) {
    recoger();
    if (colgado_) throw ErrorPuerto(MotivoPuerto::desaparecido, "el dispositivo desapareció");
    const bool fallaLinea = puesto_.linea && puesto_.linea->tomarErrorEscritura();
    if (std::exchange(puesto_.fallaEscritura, false) || fallaLinea) {
        throw ErrorPuerto(MotivoPuerto::otro, "error al escribir en el puerto");
    }
    const bool corta = puesto_.linea && puesto_.linea->tomarEscrituraCorta();
    pasar(corta ? bytes.first(bytes.size() / 2) : bytes);
    if (corta) throw ErrorPuerto(MotivoPuerto::otro, "el puerto no acepta más datos");
}

void PuertosSimulados::Puerto::pasar(std::span<const std::uint8_t> bytes) {
    puesto_.escritos.insert(puesto_.escritos.end(), bytes.begin(), bytes.end());
    const auto& ajustes = puesto_.ajustes;
    const bool seEntienden = ajustes.baudios == kBaudios && ajustes.paridad == 'n' && ajustes.bitsDatos == 8;
    if (!puesto_.linea || !seEntienden) return;
    for (const auto byte : bytes) puesto_.linea->enviar(byte, puesto_.ahora());
    programar();
}

std::size_t PuertosSimulados::Puerto::leer(std::span<std::uint8_t> destino) {
    recoger();
    std::size_t cuantos = 0;
    while (cuantos < destino.size() && !esperan_.empty()) {
        const auto siguiente = esperan_.front();
        if (!siguiente && cuantos > 0) break;
        esperan_.pop_front();
        if (!siguiente) throw ErrorPuerto(MotivoPuerto::otro, "error al leer del puerto");
        destino[cuantos++] = *siguiente;
    }
    if (cuantos == 0 && colgado_) throw ErrorPuerto(MotivoPuerto::desaparecido, "el dispositivo desapareció");
    // What the owner left lying makes the descriptor readable again.
    if (cuantos > 0 && esperan_.size() >= umbral_) {
        nuevos_ = true;
        programar();
    }
    return cuantos;
}

// Takes from the wire what has arrived by now.
void PuertosSimulados::Puerto::recoger() {
    if (!puesto_.linea) return;
    const auto ahora = puesto_.ahora();
    puesto_.linea->alDia(ahora);
    auto& llegadas = puesto_.linea->llegadas();
    while (!llegadas.empty() && llegadas.front().cuando <= ahora) {
        tomar(llegadas.front());
        llegadas.pop_front();
    }
}

void PuertosSimulados::Puerto::tomar(const LineaSimulada::Llegada& llegada) {
    switch (llegada.que) {
        case QueLlega::byte:
            esperan_.emplace_back(static_cast<std::uint8_t>(llegada.valor));
            break;
        case QueLlega::errorLectura:
            esperan_.emplace_back();
            break;
        case QueLlega::colgado:
            colgado_ = true;
            break;
        case QueLlega::suceso:
            sucesos_.push_back(llegada.valor);
            sucesoNuevo_ = true;
            return;
    }
    nuevos_ = true;
}

bool PuertosSimulados::Puerto::hayQueDespertar() const {
    if (colgado_ && !colgadoAvisado_) return true;
    if (sucesoNuevo_ && vigilaLinea_) return true;
    if (!nuevos_ && visto_) return false;
    const bool falla = std::find(esperan_.begin(), esperan_.end(), std::nullopt) != esperan_.end();
    return falla || esperan_.size() >= umbral_;
}

// The first moment at which something may have to be done: a byte reaches the logger, or what is on its way
// fills the threshold.
std::optional<Momento> PuertosSimulados::Puerto::cuandoMirar() const {
    if (hayQueDespertar()) return puesto_.ahora();
    auto cuando = puesto_.linea->proximaRecepcion();
    auto faltan = umbral_ > esperan_.size() ? umbral_ - esperan_.size() : 1;
    for (const auto& llegada : puesto_.linea->llegadas()) {
        if (llegada.que == QueLlega::suceso && !vigilaLinea_) continue;
        if (llegada.que == QueLlega::byte && --faltan > 0) continue;
        return cuando ? std::min(*cuando, llegada.cuando) : llegada.cuando;
    }
    return cuando;
}

void PuertosSimulados::Puerto::programar() {
    alarma_.reset();
    if (!puesto_.linea) return;
    const auto cuando = cuandoMirar();
    if (!cuando) return;
    alarma_ = puesto_.bucle().alarma(std::max(*cuando - puesto_.ahora(), Momento(0)), [this] { sonar(); });
}

void PuertosSimulados::Puerto::sonar() {
    recoger();
    const bool despertar = hayQueDespertar();
    if (despertar) {
        nuevos_ = false;
        visto_ = true;
        sucesoNuevo_ = false;
        colgadoAvisado_ = colgado_;
    }
    programar();
    if (!despertar) return;
    // The owner may close this port from inside.
    const auto avisar = alDespertar_;
    avisar();
}

PuertosSimulados::PuertosSimulados(Bucle& bucle, const Reloj& reloj, int baudios)
    : bucle_(bucle), reloj_(reloj), baudios_(baudios) {}
PuertosSimulados::~PuertosSimulados() = default;

void PuertosSimulados::agregar(int numero) {
    puestos_.try_emplace(numero, std::make_unique<Puesto>(bucle_, reloj_));
}

void PuertosSimulados::conectar(int numero, MaquinaRegistrador maquina) {
    agregar(numero);
    auto& aqui = puesto(numero);
    aqui.linea.emplace(std::move(maquina), baudios_);
    aqui.linea->anotar([&aqui](std::uint8_t byte) { aqui.emitidos.push_back(byte); });
}

void PuertosSimulados::rehusar(int numero, std::optional<MotivoPuerto> motivo) {
    puesto(numero).rehusa = motivo;
}

MaquinaRegistrador& PuertosSimulados::maquina(int numero) {
    return puesto(numero).laLinea().maquina();
}

void PuertosSimulados::manipular(int numero, Manipulador manipulador) {
    puesto(numero).laLinea().manipular(std::move(manipulador));
}

void PuertosSimulados::fallarEscritura(int numero) {
    puesto(numero).fallaEscritura = true;
}

void PuertosSimulados::inyectar(int numero, std::span<const std::uint8_t> bytes) {
    auto& aqui = puesto(numero);
    for (const auto byte : bytes) aqui.laLinea().emitir(byte, aqui.ahora());
    aqui.cambio();
}

void PuertosSimulados::suceder(int numero, int codigo) {
    auto& aqui = puesto(numero);
    aqui.laLinea().suceder(codigo, aqui.ahora());
    aqui.cambio();
}

void PuertosSimulados::colgar(int numero) {
    auto& aqui = puesto(numero);
    aqui.laLinea().colgar(aqui.ahora());
    aqui.cambio();
}

void PuertosSimulados::reponer(int numero) {
    puesto(numero).laLinea().reponer();
}

const std::vector<std::uint8_t>& PuertosSimulados::escritos(int numero) const {
    return puesto(numero).escritos;
}
const std::vector<std::uint8_t>& PuertosSimulados::emitidos(int numero) const {
    return puesto(numero).emitidos;
}

void PuertosSimulados::olvidarTrafico(int numero) {
    puesto(numero).escritos.clear();
    puesto(numero).emitidos.clear();
}

bool PuertosSimulados::abierto(int numero) const {
    return puesto(numero).abierto != nullptr;
}
std::size_t PuertosSimulados::aperturas(int numero) const {
    return puesto(numero).aperturas;
}
AjustesLinea PuertosSimulados::ajustes(int numero) const {
    return puesto(numero).ajustes;
}

PuertosSimulados::Puesto& PuertosSimulados::puesto(int numero) const {
    return *puestos_.at(numero);
}

bool PuertosSimulados::existe(int numero) const {
    const auto lugar = puestos_.find(numero);
    return lugar != puestos_.end() && !(lugar->second->linea && lugar->second->linea->colgada());
}

std::unique_ptr<PuertoSerie> PuertosSimulados::abrir(int numero, const AjustesLinea& ajustes,
                                                     std::function<void()> alDespertar) {
    if (!existe(numero)) throw ErrorPuerto(MotivoPuerto::noExiste, "el puerto no existe");
    auto& aqui = puesto(numero);
    if (aqui.rehusa) throw ErrorPuerto(*aqui.rehusa, "el puerto rehusó abrirse");
    if (aqui.abierto) throw ErrorPuerto(MotivoPuerto::ocupado, "el puerto está ocupado");
    aqui.ajustes = ajustes;
    ++aqui.aperturas;
    return std::make_unique<Puerto>(aqui, std::move(alDespertar));
}

}  // namespace telvane
