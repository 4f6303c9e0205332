#include "tests/app/banco.h"

#include "platform/cp1252.h"

namespace telvane {

using namespace std::chrono_literals;

Banco::Banco(int baudios, Perfil perfil, const HacerRed& hacerRed)
    : puertos(bucle, bucle.reloj(), baudios),
      red(hacerRed ? hacerRed(bucle, puertos) : nullptr),
      inicio({.bucle = bucle,
              .reloj = bucle.reloj(),
              .puertos = red ? static_cast<Puertos&>(*red) : puertos,
              .dialogos = dialogos,
              .registro = registro,
              .terminar = [this](int estado) { terminaciones.push_back(estado); },
              .informeDeFallo = [this](const std::string& que) { fallos.push_back(que); },
              .perfil = perfil,
              .carpetaBase = carpeta.ruta() / "base",
              .inhibidor = &inhibidor}) {}

void Banco::conectar(int numero, MaquinaRegistrador maquina) {
    puertos.conectar(numero, std::move(maquina));
    dialogos.responder(Boton::aceptar, kPregunta);
    dialogos.responder(Boton::aceptar, " Conexion en COM " + std::to_string(numero) + "  @ 19200 bps ");
    inicio.cargar();
    ASSERT_TRUE(bucle.correrHasta([&] { return forma.Timer1.enabled(); }, 60s));
    ASSERT_TRUE(bucle.correrHasta([&] { return inicio.operacionesEnCurso() == 0; }, 60s));
    puertos.olvidarTrafico(numero);
}

void Banco::escribir(Control& control, const std::string& texto) {
    for (const char letra : texto) {
        const int tecla = inicio.teclear(control, static_cast<unsigned char>(letra));
        const bool cabe = control.maxLength() == 0 ||
                          caracteres(control.text()) < static_cast<std::size_t>(control.maxLength());
        if (tecla != 0 && tecla >= ' ' && cabe) inicio.cambiar(control, control.text() + letra);
    }
}

}  // namespace telvane
