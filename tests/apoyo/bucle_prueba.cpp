#include "tests/apoyo/bucle_prueba.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <utility>

namespace telvane {

namespace {

using std::chrono::days;
using std::chrono::nanoseconds;

// Events of one instant after which the loop is taken to turn for ever.
constexpr std::size_t kGiroEnVano = 200'000;

nanoseconds desdeEpoca(const FechaHora& hora) {
    using namespace std::chrono;
    const auto fecha =
        year(hora.anio) / month(static_cast<unsigned>(hora.mes)) / day(static_cast<unsigned>(hora.dia));
    return local_days(fecha).time_since_epoch() + hora.deDia;
}

}  // namespace

RelojPrueba::RelojPrueba()
    : monotono_(std::chrono::hours(1)), civil_(desdeEpoca({2026, 11, 20, std::chrono::hours(10)})) {}

FechaHora RelojPrueba::ahora() const {
    using namespace std::chrono;
    const auto dia = floor<days>(civil_);
    const year_month_day fecha{local_days(dia)};
    return {static_cast<int>(fecha.year()), static_cast<int>(static_cast<unsigned>(fecha.month())),
            static_cast<int>(static_cast<unsigned>(fecha.day())), civil_ - dia};
}

void RelojPrueba::ponerHora(const FechaHora& hora) {
    civil_ = desdeEpoca(hora);
}

void RelojPrueba::dejarPasar(nanoseconds duracion) {
    monotono_ += duracion;
    civil_ += duracion;
}

struct BuclePrueba::Cola {
    // Due time, then the order of arming.
    using Clave = std::pair<nanoseconds, std::uint64_t>;
    std::map<Clave, Accion> armadas;
    std::uint64_t siguiente = 0;
};

// Destroying it disarms the alarm; it may outlive both its firing and the loop.
class BuclePrueba::Alarma final : public Bucle::Vigilancia {
   public:
    Alarma(std::shared_ptr<Cola> cola, Cola::Clave clave) : cola_(std::move(cola)), clave_(clave) {}
    Alarma(const Alarma&) = delete;
    Alarma& operator=(const Alarma&) = delete;
    ~Alarma() override { cola_->armadas.erase(clave_); }

   private:
    std::shared_ptr<Cola> cola_;
    Cola::Clave clave_;
};

BuclePrueba::BuclePrueba() : cola_(std::make_shared<Cola>()) {}
BuclePrueba::~BuclePrueba() = default;

std::unique_ptr<Bucle::Lectura> BuclePrueba::fuenteLectura(int, Accion) {
    throw std::logic_error("the loop of virtual time watches no descriptor");
}

Bucle::Asidero BuclePrueba::fuenteAlarma(Duracion plazo, Accion accion) {
    const Cola::Clave clave{reloj_.monotono() + std::max(plazo, Duracion(0)), cola_->siguiente++};
    cola_->armadas.emplace(clave, std::move(accion));
    return std::make_unique<Alarma>(cola_, clave);
}

bool BuclePrueba::girar() {
    if (cola_->armadas.empty()) return false;
    // Taken out first: calling it may destroy the handle that armed it.
    const auto alarma = cola_->armadas.extract(cola_->armadas.begin());
    vigilarGiroEnVano(alarma.key().first);
    ++entregados_;
    alarma.mapped()();
    return true;
}

void BuclePrueba::vigilarGiroEnVano(Duracion vence) {
    const auto falta = vence - reloj_.monotono();
    if (falta > Duracion(0)) {
        reloj_.dejarPasar(falta);
        enEsteInstante_ = 0;
    }
    if (++enEsteInstante_ > kGiroEnVano) throw std::logic_error("the loop turns and no time passes");
}

bool BuclePrueba::correrHasta(const std::function<bool()>& condicion, Duracion limite) {
    const auto fin = reloj_.monotono() + limite;
    while (!condicion()) {
        if (cola_->armadas.empty() || cola_->armadas.begin()->first.first > fin) {
            reloj_.dejarPasar(std::max(fin - reloj_.monotono(), Duracion(0)));
            return condicion();
        }
        girar();
    }
    return true;
}

void BuclePrueba::avanzar(Duracion duracion) {
    static_cast<void>(correrHasta([] { return false; }, duracion));
}

bool BuclePrueba::correr(Duracion limite) {
    return correrHasta([this] { return cola_->armadas.empty(); }, limite);
}

void BuclePrueba::programar(Duracion plazo, Accion accion) {
    programadas_.push_back(alarma(plazo, std::move(accion)));
}

std::size_t BuclePrueba::alarmasArmadas() const {
    return cola_->armadas.size();
}

}  // namespace telvane
