#include "app/qt/aplicacion.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>

#include <QLibraryInfo>
#include <QLocale>

#include "app/qt/estilo.h"
#include "platform/motivos.h"
#include "ui/qt/letras.h"

namespace telvane {

namespace {

constexpr const char* kVariableTema = "QT_QPA_PLATFORMTHEME";

// No display, or no way to draw on it: a sentence and an exit status instead of a core dump.
void alHablarQt(QtMsgType tipo, const QMessageLogContext&, const QString& texto) {
    std::fprintf(stderr, "telvane: %s\n", qUtf8Printable(texto));
    if (tipo != QtFatalMsg) return;
    std::fputs(kSinPantalla, stderr);
    std::_Exit(kFallo);
}

}  // namespace

bool hayPantalla() {
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) return true;
    return !qgetenv("DISPLAY").isEmpty() || !qgetenv("WAYLAND_DISPLAY").isEmpty() ||
           !qgetenv("WAYLAND_SOCKET").isEmpty();
}

void prepararQt() {
    qInstallMessageHandler(alHablarQt);
    QApplication::setStyle(std::make_unique<Estilo>().release());
    QCoreApplication::setAttribute(Qt::AA_DisableSessionManager);
    // Some desktops would load a second toolkit into the process for its dialogs alone. Fonts and icons come
    // without.
    const auto escritorio = qgetenv("XDG_CURRENT_DESKTOP").toLower();
    if (!qEnvironmentVariableIsSet(kVariableTema) && !escritorio.isEmpty() && !escritorio.contains("kde")) {
        qputenv(kVariableTema, "gnome");
    }
}

Aplicacion::Aplicacion(int& argc, char** argv) : QApplication(argc, argv) {
    // Programs that are started from here choose for themselves.
    if (qgetenv(kVariableTema) == "gnome") qunsetenv(kVariableTema);
    setApplicationName(QStringLiteral("telvane"));
    setApplicationVersion(QStringLiteral(TELVANE_VERSION));
    setDesktopFileName(QStringLiteral("telvane"));
    // The end comes from "Salir" or a signal, never from a box that was the last window on the screen.
    setQuitOnLastWindowClosed(false);
    // A font that is set does not follow the desktop's any more.
    if (const auto propia = letraDeControles(font()); propia != font()) setFont(propia);
    QLocale::setDefault(QLocale(QLocale::Spanish));
}

void Aplicacion::hablarCastellano() {
    if (castellano_.load(QStringLiteral("qtbase_es"), QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        installTranslator(&castellano_);
    }
}

bool Aplicacion::notify(QObject* receptor, QEvent* suceso) {
    try {
        return QApplication::notify(receptor, suceso);
    } catch (...) {
        if (!alFallar_) throw;
        alFallar_(queDice(std::current_exception()));
    }
    return true;
}

}  // namespace telvane
