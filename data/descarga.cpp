#include "data/descarga.h"

#include "data/pasos_descarga.h"
#include "link/siguiendo.h"
#include "regional/formatos.h"

namespace telvane {

namespace {

constexpr std::string_view kNoHayEquipoDescarga = "No hay equipo conectado (Intente Reconectar) ";
constexpr std::string_view kErrorComunicacion = "Error en comunicacion ";
constexpr std::string_view kErrorSobrante = "Error en comunicacion AQQUI";
constexpr std::string_view kExito = "La descarga de datos se realizó con exito";

}  // namespace

Tarea<> Descarga::alPulsar() {
    auto& estado = enlace_.estado;
    auto& canal = enlace_.canales.MSComm4;
    datos_.horaInicio = enlace_.reloj.ahora();
    estado.contador = 0;
    datos_.bloqueActual = 0;
    estado.respuesta = false;
    cancelada_ = false;
    bloquearOperaciones(enlace_.forma);
    enlace_.forma.Command1.enabled = false;
    vigilia_.renovar();
    co_await enlace_.despertar();
    progress_.mostrarConBarra(datos_.ultimoBloque);
    siguiendo([&] { canal.RThreshold(kUmbralByte); });
    enlace_.abrir(canal);
    co_await enlace_.esperar(kEsperaRespuesta, [&] { return estado.respuesta || cancelada_; });
    // Who cancelled it meanwhile knows that nothing came.
    if (estado.respuesta || cancelada_) co_return;
    vigilia_.soltar();
    canal.PortOpen(false);
    enlace_.forma.Timer4.enabled = false;
    co_await enlace_.avisar(kNoHayEquipoDescarga);
    progress_.descargar();
    enlace_.ofrecerReconexion();
    liberarOperaciones(enlace_.forma);
}

void Descarga::alComunicar() {
    auto& canal = enlace_.canales.MSComm4;
    if (canal.CommEvent() != suceso::kRecibido) return;
    enlace_.estado.respuesta = true;
    const auto byte = canal.InputByte();
    const auto paso = pasoDescarga(++enlace_.estado.contador, datos_.ultimoBloque, byte);
    if (paso.respuesta) siguiendo([&] { canal.Output(*paso.respuesta); });
    switch (paso.hito) {
        case HitoDescarga::saludo:
            break;
        case HitoDescarga::comienzo:
            enlace_.forma.Timer4.enabled = true;
            siguiendo([&] { canal.RThreshold(kUmbralBloque); });
            break;
        case HitoDescarga::bloque:
            leerBloque(byte);
            break;
        case HitoDescarga::error:
            fallar(kErrorComunicacion);
            break;
    }
}

void Descarga::leerBloque(std::uint8_t primero) {
    auto& canal = enlace_.canales.MSComm4;
    const auto bloque = datos_.memoria.bloque(static_cast<std::size_t>(datos_.bloqueActual));
    bloque[0] = primero;
    for (std::size_t i = 1; i < kBytesBloque; ++i) bloque[i] = canal.InputByte();
    ++datos_.bloqueActual;
    const auto sobran = canal.InBufferCount();
    const auto paso = finDeBloque(sobran);
    if (!paso.respuesta) {
        enlace_.forma.imprimir("InBufferCount=" + std::to_string(sobran));
        siguiendo([&] { canal.InBufferCount(0); });
        fallar(kErrorSobrante);
        return;
    }
    siguiendo([&] { canal.Output(*paso.respuesta); });
    vigilia_.renovar();
    progress_.ProgressBar1.value = datos_.bloqueActual;
    if (enlace_.estado.contador == datos_.ultimoBloque) salidas_.lanzar(terminar());
}

void Descarga::fallar(std::string_view texto) {
    vigilia_.soltar();
    enlace_.canales.MSComm4.PortOpen(false);
    enlace_.forma.Timer4.enabled = false;
    salidas_.lanzar(enlace_.avisar(texto));
}

Tarea<> Descarga::terminar() {
    auto& canal = enlace_.canales.MSComm4;
    siguiendo([&] { canal.RThreshold(kUmbralByte); });
    canal.PortOpen(false);
    enlace_.forma.Timer4.enabled = false;
    salidas_.guardarBase();
    vigilia_.soltar();
    co_await preguntar(enlace_.dialogos, Mensaje(kExito));
    co_await salidas_.generargt();
}

void Descarga::alCancelar() {
    cancelada_ = true;
    vigilia_.soltar();
    enlace_.forma.Timer4.enabled = false;
    enlace_.canales.MSComm4.PortOpen(false);
    progress_.descargar();
    liberarOperaciones(enlace_.forma);
}

void Descarga::alTictac() {
    const auto ahora = enlace_.reloj.ahora().deDia;
    const auto pasado = std::chrono::floor<std::chrono::seconds>(ahora) -
                        std::chrono::floor<std::chrono::seconds>(datos_.horaInicio.deDia);
    // Less than nothing, through midnight, is shown as the time of day that it stands for.
    progress_.Label1.caption = horaLarga(pasado);
}

}  // namespace telvane
