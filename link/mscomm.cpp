#include "link/mscomm.h"

#include <algorithm>

#include <fmt/format.h>

#include "link/protocolo.h"

namespace telvane {

void Tenencia::tomar(int numero, MSComm& canal) {
    soltar(canal);
    const auto parte =
        std::find_if(partes_.begin(), partes_.end(), [&](const Parte& p) { return p.numero == numero; });
    if (parte != partes_.end()) parte->canal->cerrar();
    partes_.push_back({numero, &canal});
}

void Tenencia::soltar(MSComm& canal) {
    std::erase_if(partes_, [&](const Parte& p) { return p.canal == &canal; });
}

MSComm::~MSComm() {
    cerrar();
}

void MSComm::rehusar(const std::string& que) {
    throw ErrorPuerto(MotivoPuerto::lineaInvalida, que);
}

void MSComm::CommPort(int numero) {
    if (numero < 1 || numero > kUltimoPuerto) rehusar("número de puerto fuera de rango");
    commEvent_ = suceso::kNinguno;
    if (numero != commPort_) cerrar();
    commPort_ = numero;
    if (!puertos_.existe(numero)) {
        throw ErrorPuerto(MotivoPuerto::noExiste,
                          fmt::format("no existe COM{}: enchufe su adaptador y repita", numero));
    }
}

void MSComm::Settings(const std::string& texto) {
    const auto leidos = AjustesLinea::leer(texto);
    if (puerto_) rehusar("el puerto está abierto");
    const bool dtr = ajustes_.dtr;
    const bool rts = ajustes_.rts;
    ajustes_ = leidos;
    ajustes_.dtr = dtr;
    ajustes_.rts = rts;
}

void MSComm::Handshaking(int modo) {
    if (modo != 0) rehusar("la línea no tiene control de flujo");
}

void MSComm::InputMode(Modo modo) {
    if (modo != Modo::binario) rehusar("la línea lleva bytes, no texto");
}

void MSComm::InputLen(int bytes) {
    if (bytes < 0) rehusar("InputLen negativo");
    inputLen_ = bytes;
}

void MSComm::RThreshold(int bytes) {
    if (bytes < 0) rehusar("RThreshold negativo");
    rThreshold_ = bytes;
    if (puerto_) pedirUmbral();
}

void MSComm::SThreshold(int bytes) {
    if (bytes != 0) rehusar("no hay suceso de envío");
}

void MSComm::InBufferSize(std::int16_t patron) {
    const auto bytes = static_cast<std::uint16_t>(patron);
    if (bytes == 0) rehusar("tamaño de búfer nulo");
    inBufferSize_ = bytes;
}

void MSComm::OutBufferSize(std::int16_t patron) {
    // Bytes go out at once; the size is only checked.
    if (patron == 0) rehusar("tamaño de búfer nulo");
}

void MSComm::DTREnable(bool si) {
    ajustes_.dtr = si;
    if (puerto_) puerto_->dtr(si);
}

void MSComm::RTSEnable(bool si) {
    ajustes_.rts = si;
    if (puerto_) puerto_->rts(si);
}

void MSComm::EOFEnable(bool si) {
    if (si) rehusar("la línea no tiene carácter de fin de archivo");
}

void MSComm::Break(bool si) {
    if (puerto_) {
        puerto_->romper(si);
    } else if (si) {
        throw ErrorPuerto(MotivoPuerto::cerrado, "el puerto está cerrado");
    }
}

void MSComm::DSRHolding(bool) {
    rehusar("DSRHolding es de solo lectura");
}
void MSComm::CTSHolding(bool) {
    rehusar("CTSHolding es de solo lectura");
}
void MSComm::CDHolding(bool) {
    rehusar("CDHolding es de solo lectura");
}

void MSComm::PortOpen(bool abrir) {
    cerrar();
    if (!abrir) return;
    commEvent_ = suceso::kNinguno;
    tenencia_.tomar(commPort_, *this);
    puerto_ = puertos_.abrir(commPort_, ajustes_, [this] { despertar(); });
    pedirUmbral();
    puerto_->vigilarLinea(vigilarLinea_);
}

void MSComm::cerrar() {
    tenencia_.soltar(*this);
    ++apertura_;
    puerto_.reset();
    entrada_ = {};
    desaparecido_ = false;
    porQueDesaparecio_.clear();
    falloContado_ = false;
}

void MSComm::Output(std::uint8_t byte) {
    Output(std::span(&byte, 1));
}

void MSComm::Output(std::span<const std::uint8_t> bytes) {
    if (!puerto_) throw ErrorPuerto(MotivoPuerto::cerrado, "el puerto está cerrado");
    try {
        puerto_->escribir(bytes);
    } catch (const ErrorPuerto& error) {
        contarFallo(error.what());
        throw;
    }
}

void MSComm::contarFallo(const std::string& porQue) {
    if (!std::exchange(falloContado_, true) && alFallar) alFallar(porQue);
}

std::vector<std::uint8_t> MSComm::Input() {
    llenar();
    return entrada_.tomar(inputLen_ == 0 ? entrada_.esperan() : static_cast<std::size_t>(inputLen_));
}

std::uint8_t MSComm::InputByte() {
    if (entrada_.esperan() == 0) llenar();
    return entrada_.esperan() > 0 ? entrada_.tomar() : std::uint8_t{0};
}

std::size_t MSComm::InBufferCount() {
    llenar();
    return entrada_.esperan();
}

void MSComm::InBufferCount(int cero) {
    if (cero != 0) rehusar("InBufferCount solo admite 0");
    entrada_.vaciar();
    if (puerto_) puerto_->vaciarEntrada();
}

void MSComm::vigilarLinea(bool si) {
    vigilarLinea_ = si;
    if (puerto_) puerto_->vigilarLinea(si);
}

void MSComm::suceder(int codigo) {
    commEvent_ = codigo;
    if (alComunicar) alComunicar();
}

// Takes over what the system holds, up to the buffer's size; the rest is lost, as on a full buffer.
void MSComm::llenar() {
    if (!puerto_ || desaparecido_) return;
    try {
        entrada_.llenar(*puerto_, inBufferSize_);
    } catch (const ErrorPuerto& error) {
        // The device has gone: what came before stays readable, and the channel can be closed and opened
        // again.
        desaparecido_ = true;
        porQueDesaparecio_ = error.what();
    }
}

// The system wakes us once the bytes still missing to the threshold have come.
void MSComm::pedirUmbral() {
    if (!puerto_ || desaparecido_) return;
    const int esperan = static_cast<int>(entrada_.esperan());
    puerto_->umbral(std::clamp(rThreshold_ - esperan, 1, PuertoSerie::kUmbralMaximo));
}

void MSComm::despertar() {
    const auto apertura = apertura_;
    const auto sigue = [&] { return apertura_ == apertura; };

    llenar();
    for (const int codigo : puerto_->sucesosDeLinea()) {
        suceder(codigo);
        if (!sigue()) return;
    }
    if (entrada_.desbordado()) {
        suceder(suceso::kDesbordamiento);
        if (!sigue()) return;
    }
    while (rThreshold_ > 0) {
        const std::size_t esperan = entrada_.esperan();
        if (esperan < static_cast<std::size_t>(rThreshold_)) break;
        suceder(suceso::kRecibido);
        if (!sigue()) return;
        // A handler that took nothing is not asked again for the same bytes.
        if (entrada_.esperan() >= esperan) break;
    }
    if (const auto porQue = std::exchange(porQueDesaparecio_, {}); !porQue.empty()) {
        contarFallo(porQue);
        if (!sigue()) return;
    }
    pedirUmbral();
}

}  // namespace telvane
