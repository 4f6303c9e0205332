#include "tests/e2e/color_en_pantalla.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace telvane {

namespace {

struct Soltar {
    void operator()(xcb_get_image_reply_t* p) const { std::free(p); }
    void operator()(xcb_connection_t* p) const { xcb_disconnect(p); }
};

}  // namespace

std::optional<std::uint32_t> colorEnPantalla(const std::string& pantalla, int x, int y) {
    const std::unique_ptr<xcb_connection_t, Soltar> conexion(xcb_connect(pantalla.c_str(), nullptr));
    if (xcb_connection_has_error(conexion.get()) != 0) return std::nullopt;
    const auto raiz = xcb_setup_roots_iterator(xcb_get_setup(conexion.get())).data->root;
    const auto pedido = xcb_get_image(conexion.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, raiz,
                                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 1, 1, ~0U);
    const std::unique_ptr<xcb_get_image_reply_t, Soltar> imagen(
        xcb_get_image_reply(conexion.get(), pedido, nullptr));
    if (!imagen || xcb_get_image_data_length(imagen.get()) < 3) return std::nullopt;
    const auto* bytes = xcb_get_image_data(imagen.get());
    return static_cast<std::uint32_t>(bytes[2] << 16 | bytes[1] << 8 | bytes[0]);
}

}  // namespace telvane
