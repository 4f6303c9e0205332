#include "simulator/memoria_simulada.h"

#include <algorithm>

#include "platform/cp1252.h"

namespace telvane {

namespace {

constexpr std::uint8_t kBorrado = 0xFF;
constexpr SegundosCiviles kCadaMuestra{3600};

SegundosCiviles primeraMuestra() {
    return segundosCiviles({2018, 11, 20, std::chrono::nanoseconds(0)});
}

}  // namespace

void ponerSerie(std::span<std::uint8_t> imagen, std::string_view digitos) {
    for (std::size_t i = 0; i < kBytesSerie; ++i) {
        imagen[registro_config::kSerie + i] =
            empacarBcd((digitos[2 * i] - '0') * 10 + (digitos[2 * i + 1] - '0'));
    }
}

bool tieneSerie(std::span<const std::uint8_t> imagen) {
    const auto serie = imagen.subspan(registro_config::kSerie, kBytesSerie);
    return std::all_of(serie.begin(), serie.end(), [](auto b) { return (b >> 4) < 10 && (b & 0x0F) < 10; });
}

void ponerConfiguracion(std::span<std::uint8_t> imagen, const ConfiguracionSimulada& config) {
    ponerSerie(imagen, config.serie);
    std::size_t lugar = registro_config::kUsuario;
    for (std::size_t campo = 0; campo < kAnchos.size(); ++campo) {
        const auto ancho = static_cast<std::size_t>(kAnchos[campo]);
        auto texto = cp1252DeUtf8(config.textos[campo]);
        texto.resize(ancho, ' ');
        std::copy(texto.begin(), texto.end(), imagen.begin() + static_cast<std::ptrdiff_t>(lugar));
        lugar += ancho;
    }
    imagen[registro_config::kIntervalo] = config.intervaloCodigo;
}

void ponerReloj(std::span<std::uint8_t> imagen, const FechaHora& reloj) {
    const auto bytes = relojBcd(reloj);
    std::copy(bytes.begin(), bytes.end(), imagen.begin() + registro_config::kReloj);
}

void borrarMuestras(std::span<std::uint8_t> imagen) {
    std::fill(imagen.begin() + registro_config::kFin, imagen.end(), kBorrado);
}

std::vector<std::uint8_t> memoriaVacia(const ConfiguracionSimulada& config, const FechaHora& reloj) {
    std::vector<std::uint8_t> imagen(kBytesMemoria, kBorrado);
    ponerConfiguracion(imagen, config);
    ponerReloj(imagen, reloj);
    return imagen;
}

std::vector<std::uint8_t> memoriaSimulada(const Clima& clima, const ConfiguracionSimulada& config) {
    auto imagen = memoriaVacia(config, {});
    auto momento = primeraMuestra();
    for (auto lugar = kInicioRegistros; lugar < kBytesMemoria; lugar += registro_muestra::kBytes) {
        const auto registro = registroDeMuestra(clima.en(momento), fechaHoraDe(momento));
        std::copy(registro.begin(), registro.end(), imagen.begin() + static_cast<std::ptrdiff_t>(lugar));
        momento += kCadaMuestra;
    }
    ponerReloj(imagen, fechaHoraDe(momento - kCadaMuestra));
    return imagen;
}

}  // namespace telvane
