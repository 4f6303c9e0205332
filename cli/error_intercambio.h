// An exchange with the logger that went wrong and may go right the next time.
#pragma once

#include "consola/codigos_salida.h"

namespace telvane {

class ErrorIntercambio : public ErrorCli {
   public:
    using ErrorCli::ErrorCli;
};

}  // namespace telvane
