// The toolkit's application object, set up as this program needs it.
#pragma once

#include <functional>
#include <string>

#include <QApplication>
#include <QTranslator>

namespace telvane {

class Aplicacion final : public QApplication {
   public:
    Aplicacion(int& argc, char** argv);

    // Spanish for the toolkit's own dialogs and menus, where its translation is installed. No widget on the
    // screen needs it, so it may wait for the first frame.
    void hablarCastellano();
    // Called with what an event handler did not expect.
    void alFallar(std::function<void(const std::string& que)> accion) { alFallar_ = std::move(accion); }

    bool notify(QObject* receptor, QEvent* suceso) override;

   private:
    QTranslator castellano_;
    std::function<void(const std::string&)> alFallar_;
};

// Exit status without a display, after what nobody expected, and where the standard output did not take all.
inline constexpr int kFallo = 1;

inline constexpr const char* kSinPantalla =
    "telvane: no se puede abrir una ventana en esta pantalla. Entre en una sesión gráfica, o use "
    "telvane-cli\n";
// Whether the environment names a display, or whoever started us chose a platform: the toolkit says in
// English, and at length, that there is none.
bool hayPantalla();

// Before the application exists: style, theme, and what a fatal error of the toolkit does.
void prepararQt();

}  // namespace telvane
