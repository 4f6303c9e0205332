#include "tests/apoyo/bucle_prueba.h"

#include <poll.h>

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

    struct Descriptor {
        int numero;
        bool activo;
        Accion accion;
    };
    std::map<std::uint64_t, Descriptor> lecturas;
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

class BuclePrueba::LecturaDePrueba final : public Bucle::Lectura {
   public:
    LecturaDePrueba(std::shared_ptr<Cola> cola, std::uint64_t clave)
        : cola_(std::move(cola)), clave_(clave) {}
    LecturaDePrueba(const LecturaDePrueba&) = delete;
    LecturaDePrueba& operator=(const LecturaDePrueba&) = delete;
    ~LecturaDePrueba() override { cola_->lecturas.erase(clave_); }
    void activa(bool si) override { cola_->lecturas.at(clave_).activo = si; }

   private:
    std::shared_ptr<Cola> cola_;
    std::uint64_t clave_;
};

BuclePrueba::BuclePrueba() : cola_(std::make_shared<Cola>()) {}
BuclePrueba::~BuclePrueba() = default;

std::unique_ptr<Bucle::Lectura> BuclePrueba::fuenteLectura(int descriptor, Accion accion) {
    if (!alrededores_) throw std::logic_error("the loop of virtual time watches no descriptor");
    const auto clave = cola_->siguiente++;
    cola_->lecturas.emplace(clave, Cola::Descriptor{descriptor, true, std::move(accion)});
    return std::make_unique<LecturaDePrueba>(cola_, clave);
}

Bucle::Asidero BuclePrueba::fuenteAlarma(Duracion plazo, Accion accion) {
    const Cola::Clave clave{reloj_.monotono() + std::max(plazo, Duracion(0)), cola_->siguiente++};
    cola_->armadas.emplace(clave, std::move(accion));
    return std::make_unique<Alarma>(cola_, clave);
}

bool BuclePrueba::girar() {
    if (entregarLectura()) return true;
    if (cola_->armadas.empty()) return false;
    girarAlarma();
    return true;
}

void BuclePrueba::girarAlarma() {
    // Taken out first: calling it may destroy the handle that armed it.
    const auto alarma = cola_->armadas.extract(cola_->armadas.begin());
    vigilarGiroEnVano(alarma.key().first);
    ++entregados_;
    alarma.mapped()();
}

// The first watched descriptor that has something by now; false: none has.
bool BuclePrueba::entregarLectura() {
    bool hayMas = alrededores_ != nullptr;
    while (hayMas) {
        hayMas = alrededores_->alDia();
        for (const auto& [clave, lectura] : cola_->lecturas) {
            pollfd estado{lectura.numero, POLLIN, 0};
            if (!lectura.activo || ::poll(&estado, 1, 0) <= 0) continue;
            vigilarGiroEnVano(reloj_.monotono());
            ++entregados_;
            // Calling it may destroy the watch and with it the original.
            const Accion accion = lectura.accion;
            accion();
            return true;
        }
    }
    return false;
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
        if (entregarLectura()) continue;
        if (cola_->armadas.empty() || cola_->armadas.begin()->first.first > fin) {
            reloj_.dejarPasar(std::max(fin - reloj_.monotono(), Duracion(0)));
            return condicion();
        }
        girarAlarma();
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
