#include "tests/apoyo/dialogos_prueba.h"

#include <utility>

#include <gtest/gtest.h>

namespace telvane {

namespace {

Boton alCerrar(Botones botones) {
    switch (botones) {
        case Botones::aceptarCancelar:
            return Boton::cancelar;
        case Botones::siNo:
            return Boton::no;
        case Botones::aceptar:
            break;
    }
    return Boton::aceptar;
}

}  // namespace

DialogosPrueba::~DialogosPrueba() {
    EXPECT_TRUE(respuestas_.empty()) << respuestas_.size() << " message boxes were expected and never shown";
    EXPECT_TRUE(respuestasArchivo_.empty()) << respuestasArchivo_.size() << " file dialogs never came";
}

void DialogosPrueba::responder(Boton boton, std::optional<std::string> texto) {
    respuestas_.push_back({boton, std::move(texto)});
}

void DialogosPrueba::dejarAbierto(std::optional<std::string> texto) {
    respuestas_.push_back({std::nullopt, std::move(texto)});
}

void DialogosPrueba::responderArchivo(Ruta ruta) {
    respuestasArchivo_.push_back({false, std::move(ruta)});
}

void DialogosPrueba::dejarAbiertoArchivo() {
    respuestasArchivo_.push_back({true, std::nullopt});
}

void DialogosPrueba::contestar(Boton boton) {
    ASSERT_FALSE(abiertos_.empty()) << "no message box is open";
    const auto listo = std::move(abiertos_.back());
    abiertos_.pop_back();
    listo(boton);
}

void DialogosPrueba::contestarArchivo(Ruta ruta) {
    ASSERT_FALSE(archivosAbiertos_.empty()) << "no file dialog is open";
    const auto listo = std::move(archivosAbiertos_.back());
    archivosAbiertos_.pop_back();
    listo(std::move(ruta));
}

std::vector<std::string> DialogosPrueba::textos() const {
    std::vector<std::string> textos;
    for (const auto& mensaje : mensajes_) textos.push_back(mensaje.texto);
    return textos;
}

void DialogosPrueba::olvidar() {
    mensajes_.clear();
    archivos_.clear();
    documentos_.clear();
}

void DialogosPrueba::mensaje(const Mensaje& mensaje, std::function<void(Boton)> listo) {
    mensajes_.push_back(mensaje);
    if (respuestas_.empty()) {
        if (!siempre_) ADD_FAILURE() << "unexpected message box: \"" << mensaje.texto << '"';
        listo(siempre_.value_or(alCerrar(mensaje.botones)));
        return;
    }
    const auto respuesta = std::move(respuestas_.front());
    respuestas_.pop_front();
    if (respuesta.texto) {
        EXPECT_EQ(*respuesta.texto, mensaje.texto);
    }
    if (respuesta.boton) {
        listo(*respuesta.boton);
    } else {
        abiertos_.push_back(std::move(listo));
    }
}

void DialogosPrueba::archivo(const PeticionArchivo& peticion, std::function<void(Ruta)> listo) {
    archivos_.push_back(peticion);
    if (respuestasArchivo_.empty()) {
        if (!archivoSiempre_) ADD_FAILURE() << "unexpected file dialog: \"" << peticion.nombre << '"';
        listo(archivoSiempre_.value_or(std::nullopt));
        return;
    }
    auto respuesta = std::move(respuestasArchivo_.front());
    respuestasArchivo_.pop_front();
    if (respuesta.abierto) {
        archivosAbiertos_.push_back(std::move(listo));
    } else {
        listo(std::move(respuesta.ruta));
    }
}

void DialogosPrueba::abrirDocumento(const std::filesystem::path& ruta, std::function<void()> alFallar) {
    documentos_.push_back(ruta);
    if (!abre_) alFallar();
}

}  // namespace telvane
