#include "app/qt/cierre_del_marco.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

#include <QGuiApplication>
#include <QWidget>

namespace telvane {

namespace {

// Answers of the server are the C library's to free.
struct Soltar {
    void operator()(void* respuesta) const { std::free(respuesta); }  // NOLINT(*-no-malloc)
};

xcb_intern_atom_cookie_t pedirAtomo(xcb_connection_t* servidor, std::string_view nombre) {
    return xcb_intern_atom(servidor, 0, static_cast<std::uint16_t>(nombre.size()), nombre.data());
}

xcb_atom_t atomo(xcb_connection_t* servidor, xcb_intern_atom_cookie_t pedido) {
    const std::unique_ptr<xcb_intern_atom_reply_t, Soltar> respuesta(
        xcb_intern_atom_reply(servidor, pedido, nullptr));
    return respuesta ? respuesta->atom : xcb_atom_t{XCB_ATOM_NONE};
}

// Window managers send these messages seldom: their names are asked for when one comes, not at the start.
bool pideCerrar(xcb_connection_t* servidor, const xcb_client_message_event_t& mensaje) {
    const auto pedidoClase = pedirAtomo(servidor, "WM_PROTOCOLS");
    const auto pedidoCierre = pedirAtomo(servidor, "WM_DELETE_WINDOW");
    const auto clase = atomo(servidor, pedidoClase);
    const auto cierre = atomo(servidor, pedidoCierre);
    return cierre != XCB_ATOM_NONE && mensaje.type == clase && mensaje.data.data32[0] == cierre;
}

}  // namespace

CierreDelMarco::CierreDelMarco(QWidget& ventana) : ventana_(ventana) {
    qGuiApp->installNativeEventFilter(this);
}

bool CierreDelMarco::nativeEventFilter(const QByteArray& clase, void* suceso, qintptr*) {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr || clase != "xcb_generic_event_t") return false;
    // The first bit tells who sent it: the server or, as here, another program.
    constexpr unsigned kSinRemitente = 0x7F;
    if ((static_cast<xcb_generic_event_t*>(suceso)->response_type & kSinRemitente) != XCB_CLIENT_MESSAGE) {
        return false;
    }
    const auto& mensaje = *static_cast<xcb_client_message_event_t*>(suceso);
    if (mensaje.window != ventana_.internalWinId() || !pideCerrar(x11->connection(), mensaje)) return false;
    ventana_.close();
    return true;
}

}  // namespace telvane
