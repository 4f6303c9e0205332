#include "link/sucesos.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "link/protocolo.h"
#include "link/siguiendo.h"

namespace telvane {

namespace {

struct Texto {
    int codigo;
    std::string_view linea;
};

constexpr std::array<Texto, 17> kTextos = {{
    {suceso::kEnviado, ""},
    {suceso::kRecibido, ""},
    {suceso::kCts, "cambio en CTS"},
    {suceso::kDsr, "Detectado cambio en DSR"},
    {suceso::kCd, "Detectado cambio en CD"},
    {suceso::kTimbre, "El teléfono está sonando"},
    {suceso::kFinArchivo, "Detectado el final del archivo"},
    {suceso::kParada, "Parada recibida"},
    {suceso::kEsperaCts, "Soprepasado el tiempo de espera de CTS"},
    {suceso::kEsperaDsr, "Sobrepasado el tiempo de espera de DSR"},
    {suceso::kMarco, "Error de marco"},
    {suceso::kSobrecarga, "Error de sobrecarga"},
    {suceso::kEsperaCd, "Sobrepasado el tiempo de espera de detección de portadora"},
    {suceso::kDesbordamiento, "Desbordamiento en el búfer de recepción"},
    {suceso::kParidad, "Error de paridad"},
    {suceso::kEnvioLleno, "Búfer de transmisión lleno"},
    {suceso::kDcb, "Error recibiendo DCB"},
}};

// A number in its signed decimal form: a blank stands in place of the sign of one that is not negative.
std::string conSigno(std::size_t numero) {
    return fmt::format(" {}", numero);
}

void alRecibir(Enlace& enlace) {
    auto& canal = enlace.canales.MSComm1;
    const std::size_t esperan = canal.InBufferCount();
    if (esperan >= static_cast<std::size_t>(kUmbralSonda)) {
        enlace.estado.respuesta = true;
        enlace.forma.imprimir(conSigno(esperan));
        canal.PortOpen(false);
        return;
    }
    enlace.forma.imprimir("PEPE" + conSigno(esperan));
    siguiendo([&] { canal.InBufferCount(0); });
    enlace.forma.imprimir("otro valor eventos");
}

}  // namespace

std::string_view textoDeSuceso(int codigo) {
    const auto lugar =
        std::find_if(kTextos.begin(), kTextos.end(), [&](const Texto& t) { return t.codigo == codigo; });
    return lugar == kTextos.end() ? "Error o evento desconocido" : lugar->linea;
}

void alComunicarSonda(Enlace& enlace) {
    const int codigo = enlace.canales.MSComm1.CommEvent();
    if (codigo == suceso::kRecibido) {
        alRecibir(enlace);
        return;
    }
    const auto linea = textoDeSuceso(codigo);
    if (!linea.empty()) enlace.forma.imprimir(std::string(linea));
}

}  // namespace telvane
