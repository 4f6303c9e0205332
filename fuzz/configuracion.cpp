// The configuration record as it comes, and every text that is made of it.
#include "cli/textos_cli.h"
#include "fuzz/azar.h"
#include "loggerconfig/pasos_lectura.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t cuantos) {
    using namespace telvane;
    Entrada entrada(datos, cuantos);
    DatosConfig config;
    std::int32_t contador = 0;
    while (entrada.queda()) {
        const auto byte = entrada.byte();
        const auto paso = pasoLectura(++contador, byte, config);
        const bool dentro = contador <= kContadorFinLectura;
        exigirQue(paso.respuesta.has_value() == dentro);
        exigirQue((paso.hito == HitoLectura::fueraDePaso) == !dentro);
        if (dentro && contador > 2) exigirQue(*paso.respuesta == byte);
        static_cast<void>(segundosDeReloj(config.reloj));
        static_cast<void>(diaDeReloj(config.reloj));
    }
    static_cast<void>(numeroDeSerie(config.Nserie));
    exigirQue(!configuracionParaPersonas(config).empty());
    exigirQue(configuracionJson(config, 1, "/dev/ttyUSB0").ends_with("}\n"));
    return 0;
}
