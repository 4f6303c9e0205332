// What a serial channel says in its communication event; a port reports the line with the same codes.
#pragma once

// CommEvent codes.
namespace telvane::suceso {

inline constexpr int kNinguno = 0;
inline constexpr int kEnviado = 1;
inline constexpr int kRecibido = 2;
inline constexpr int kCts = 3;
inline constexpr int kDsr = 4;
inline constexpr int kCd = 5;
inline constexpr int kTimbre = 6;
inline constexpr int kFinArchivo = 7;
inline constexpr int kParada = 1001;
inline constexpr int kEsperaCts = 1002;
inline constexpr int kEsperaDsr = 1003;
inline constexpr int kMarco = 1004;
inline constexpr int kSobrecarga = 1006;
inline constexpr int kEsperaCd = 1007;
inline constexpr int kDesbordamiento = 1008;
inline constexpr int kParidad = 1009;
inline constexpr int kEnvioLleno = 1010;
inline constexpr int kDcb = 1011;

}  // namespace telvane::suceso
