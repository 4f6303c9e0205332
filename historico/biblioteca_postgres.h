// libpq's routines, loaded when the first of them is needed: the library brings two dozen others along, and
// an archive in a file needs none of them.
#pragma once

#include <libpq-fe.h>

namespace telvane {

// Each is what the library calls PQ and its name.
class BibliotecaPostgres {
   public:
    // Throws ErrorAlmacen, which says what to install, where there is no such library. It stays loaded.
    explicit BibliotecaPostgres(const char* archivo = "libpq.so.5");

   private:
    template <class Rutina>
    Rutina* rutina(const char* nombre) const;

    void* asidero_;

   public:
    decltype(::PQcancel)* const cancel;
    decltype(::PQclear)* const clear;
    decltype(::PQcmdTuples)* const cmdTuples;
    decltype(::PQconnectStartParams)* const connectStartParams;
    decltype(::PQconninfoFree)* const conninfoFree;
    decltype(::PQconninfoParse)* const conninfoParse;
    decltype(::PQconsumeInput)* const consumeInput;
    decltype(::PQerrorMessage)* const errorMessage;
    decltype(::PQfinish)* const finish;
    decltype(::PQflush)* const flush;
    decltype(::PQfreeCancel)* const freeCancel;
    decltype(::PQfreemem)* const freemem;
    decltype(::PQgetCancel)* const getCancel;
    decltype(::PQgetResult)* const getResult;
    decltype(::PQgetisnull)* const getisnull;
    decltype(::PQgetlength)* const getlength;
    decltype(::PQgetvalue)* const getvalue;
    decltype(::PQisBusy)* const isBusy;
    decltype(::PQntuples)* const ntuples;
    decltype(::PQputCopyData)* const putCopyData;
    decltype(::PQputCopyEnd)* const putCopyEnd;
    decltype(::PQreset)* const reset;
    decltype(::PQresultErrorField)* const resultErrorField;
    decltype(::PQresultStatus)* const resultStatus;
    decltype(::PQsendPrepare)* const sendPrepare;
    decltype(::PQsendQuery)* const sendQuery;
    decltype(::PQsendQueryParams)* const sendQueryParams;
    decltype(::PQsendQueryPrepared)* const sendQueryPrepared;
    decltype(::PQsetErrorVerbosity)* const setErrorVerbosity;
    decltype(::PQsetNoticeReceiver)* const setNoticeReceiver;
    decltype(::PQsetnonblocking)* const setnonblocking;
    decltype(::PQsocket)* const socket;
    decltype(::PQstatus)* const status;
    decltype(::PQtransactionStatus)* const transactionStatus;
};

// The one that this process uses.
const BibliotecaPostgres& pq();

}  // namespace telvane
