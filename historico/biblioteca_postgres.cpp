#include "historico/biblioteca_postgres.h"

#include <dlfcn.h>

#include <string>
#include <string_view>

#include "historico/almacen.h"
#include "platform/motivos.h"

namespace telvane {

namespace {

[[noreturn]] void falta() {
    throw ErrorAlmacen(
        "para una base de datos PostgreSQL hace falta la biblioteca libpq: instale el paquete libpq5");
}

void* cargar(const char* archivo) {
    auto* asidero = ::dlopen(archivo, RTLD_NOW | RTLD_LOCAL);
    if (asidero != nullptr) return asidero;
    // The loader has words only, and those in English. What the session has no room for may well be
    // installed.
    const std::string_view dicho = ::dlerror();
    const auto dice = [&](std::string_view que) { return dicho.find(que) != std::string_view::npos; };
    if (dice("failed to map segment") || dice("annot allocate"))
        throw ErrorAlmacen(std::string(motivoSinMemoria()));
    falta();
}

}  // namespace

// A routine of this library's fifth version is in every later one of that name.
template <class Rutina>
Rutina* BibliotecaPostgres::rutina(const char* nombre) const {
    auto* lugar = reinterpret_cast<Rutina*>(::dlsym(asidero_, nombre));
    if (lugar == nullptr) falta();
    return lugar;
}

BibliotecaPostgres::BibliotecaPostgres(const char* archivo)
    : asidero_(cargar(archivo)),
      cancel(rutina<decltype(::PQcancel)>("PQcancel")),
      clear(rutina<decltype(::PQclear)>("PQclear")),
      cmdTuples(rutina<decltype(::PQcmdTuples)>("PQcmdTuples")),
      connectStartParams(rutina<decltype(::PQconnectStartParams)>("PQconnectStartParams")),
      conninfoFree(rutina<decltype(::PQconninfoFree)>("PQconninfoFree")),
      conninfoParse(rutina<decltype(::PQconninfoParse)>("PQconninfoParse")),
      consumeInput(rutina<decltype(::PQconsumeInput)>("PQconsumeInput")),
      errorMessage(rutina<decltype(::PQerrorMessage)>("PQerrorMessage")),
      finish(rutina<decltype(::PQfinish)>("PQfinish")),
      flush(rutina<decltype(::PQflush)>("PQflush")),
      freeCancel(rutina<decltype(::PQfreeCancel)>("PQfreeCancel")),
      freemem(rutina<decltype(::PQfreemem)>("PQfreemem")),
      getCancel(rutina<decltype(::PQgetCancel)>("PQgetCancel")),
      getResult(rutina<decltype(::PQgetResult)>("PQgetResult")),
      getisnull(rutina<decltype(::PQgetisnull)>("PQgetisnull")),
      getlength(rutina<decltype(::PQgetlength)>("PQgetlength")),
      getvalue(rutina<decltype(::PQgetvalue)>("PQgetvalue")),
      isBusy(rutina<decltype(::PQisBusy)>("PQisBusy")),
      ntuples(rutina<decltype(::PQntuples)>("PQntuples")),
      putCopyData(rutina<decltype(::PQputCopyData)>("PQputCopyData")),
      putCopyEnd(rutina<decltype(::PQputCopyEnd)>("PQputCopyEnd")),
      reset(rutina<decltype(::PQreset)>("PQreset")),
      resultErrorField(rutina<decltype(::PQresultErrorField)>("PQresultErrorField")),
      resultStatus(rutina<decltype(::PQresultStatus)>("PQresultStatus")),
      sendPrepare(rutina<decltype(::PQsendPrepare)>("PQsendPrepare")),
      sendQuery(rutina<decltype(::PQsendQuery)>("PQsendQuery")),
      sendQueryParams(rutina<decltype(::PQsendQueryParams)>("PQsendQueryParams")),
      sendQueryPrepared(rutina<decltype(::PQsendQueryPrepared)>("PQsendQueryPrepared")),
      setErrorVerbosity(rutina<decltype(::PQsetErrorVerbosity)>("PQsetErrorVerbosity")),
      setNoticeReceiver(rutina<decltype(::PQsetNoticeReceiver)>("PQsetNoticeReceiver")),
      setnonblocking(rutina<decltype(::PQsetnonblocking)>("PQsetnonblocking")),
      socket(rutina<decltype(::PQsocket)>("PQsocket")),
      status(rutina<decltype(::PQstatus)>("PQstatus")),
      transactionStatus(rutina<decltype(::PQtransactionStatus)>("PQtransactionStatus")) {}

const BibliotecaPostgres& pq() {
    static const BibliotecaPostgres kBiblioteca;
    return kBiblioteca;
}

}  // namespace telvane
