#include "app/qt/senales.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include <QSocketNotifier>

#include "platform/senales_de_fin.h"

namespace telvane {

namespace {

// A signal handler is handed nothing but the signal: the ends of the pipe it writes to stand here.
std::array<int, 2> tubo = {-1, -1};

void alRecibir(int) {
    const int previo = errno;
    const char byte = 0;
    // A full pipe has told already.
    static_cast<void>(!::write(tubo[1], &byte, 1));
    errno = previo;
}

void instalar(const std::vector<int>& senales, void (*manejador)(int)) {
    struct sigaction accion = {};
    accion.sa_handler = manejador;
    accion.sa_flags = SA_RESTART;
    for (const int senal : senales) ::sigaction(senal, &accion, nullptr);
}

}  // namespace

SenalesDeFin::SenalesDeFin(std::function<void()> alTerminar) : senales_(senalesQueTerminan()) {
    if (::pipe2(tubo.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe2");
    }
    aviso_ = std::make_unique<QSocketNotifier>(tubo[0], QSocketNotifier::Read);
    QObject::connect(aviso_.get(), &QSocketNotifier::activated, aviso_.get(),
                     [this, alTerminar = std::move(alTerminar)] {
                         aviso_->setEnabled(false);
                         alTerminar();
                     });
    instalar(senales_, alRecibir);
}

SenalesDeFin::~SenalesDeFin() {
    instalar(senales_, SIG_DFL);
    aviso_.reset();
    for (auto& extremo : tubo) ::close(std::exchange(extremo, -1));
}

}  // namespace telvane
