#include "tests/e2e/marco.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace telvane {

namespace {

struct Soltar {
    void operator()(void* p) const { std::free(p); }
    void operator()(xcb_connection_t* p) const { xcb_disconnect(p); }
};
template <class T>
using Respuesta = std::unique_ptr<T, Soltar>;

xcb_atom_t atomo(xcb_connection_t* x, const std::string& nombre) {
    const auto pedido = xcb_intern_atom(x, 0, static_cast<std::uint16_t>(nombre.size()), nombre.data());
    const Respuesta<xcb_intern_atom_reply_t> respuesta(xcb_intern_atom_reply(x, pedido, nullptr));
    return respuesta ? respuesta->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::string titulo(xcb_connection_t* x, xcb_window_t ventana, xcb_atom_t nombre) {
    const auto pedido = xcb_get_property(x, 0, ventana, nombre, XCB_GET_PROPERTY_TYPE_ANY, 0, 256);
    const Respuesta<xcb_get_property_reply_t> respuesta(xcb_get_property_reply(x, pedido, nullptr));
    if (!respuesta) return "";
    return {static_cast<const char*>(xcb_get_property_value(respuesta.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(respuesta.get()))};
}

void pedirCierre(xcb_connection_t* x, xcb_window_t ventana) {
    xcb_client_message_event_t mensaje{};
    mensaje.response_type = XCB_CLIENT_MESSAGE;
    mensaje.format = 32;
    mensaje.window = ventana;
    mensaje.type = atomo(x, "WM_PROTOCOLS");
    mensaje.data.data32[0] = atomo(x, "WM_DELETE_WINDOW");
    mensaje.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(x, 0, ventana, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&mensaje));
    // Only what the server has dealt with outlives this connection.
    const Respuesta<xcb_get_input_focus_reply_t> recibido(
        xcb_get_input_focus_reply(x, xcb_get_input_focus(x), nullptr));
}

}  // namespace

bool cerrarPorElMarco(const std::string& pantalla, const std::string& cual) {
    const std::unique_ptr<xcb_connection_t, Soltar> x(xcb_connect(pantalla.c_str(), nullptr));
    if (xcb_connection_has_error(x.get()) != 0) return false;
    const auto raiz = xcb_setup_roots_iterator(xcb_get_setup(x.get())).data->root;
    const auto nombre = atomo(x.get(), "_NET_WM_NAME");
    const Respuesta<xcb_query_tree_reply_t> arbol(
        xcb_query_tree_reply(x.get(), xcb_query_tree(x.get(), raiz), nullptr));
    if (!arbol) return false;
    const auto* hijas = xcb_query_tree_children(arbol.get());
    for (int i = xcb_query_tree_children_length(arbol.get()); i-- > 0;) {
        if (titulo(x.get(), hijas[i], nombre) != cual) continue;
        pedirCierre(x.get(), hijas[i]);
        return true;
    }
    return false;
}

}  // namespace telvane
