// What may be written where: decided in one place for every file that our programs write.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace telvane {

class ErrorGuardado : public std::runtime_error {
   public:
    using std::runtime_error::runtime_error;
};

// The name, or what stands under it, says that nothing is to be written there: another kind of file, one that
// is read for it, a data base, or where this process tells what it does.
class ErrorNombre : public ErrorGuardado {
   public:
    using ErrorGuardado::ErrorGuardado;
};

// Two options of one line: "--base y --csv son el mismo archivo: x; dé otro nombre a uno de los dos"
std::string sonElMismoArchivo(std::string_view una, std::string_view otra, const std::filesystem::path& ruta);

// With those above it, where they are missing; their owner can use them, whatever the umask, which is another
// one for a moment. Throws ErrorGuardado.
void crearCarpeta(const std::filesystem::path& carpeta);
// Throws as that would where it is known by now that a file cannot come there; makes nothing.
void exigirQueSePuedaCrear(const std::filesystem::path& carpeta);

// Whether the file's name has one of these endings, told in lower case, in whatever case.
bool terminaEn(const std::filesystem::path& ruta, std::span<const std::string_view> terminaciones);

// Why a file may not have a name that ends so; empty: this one does not.
std::string motivoDeTerminacion(const std::filesystem::path& ruta, std::span<const std::string_view> vedadas);

// "no se pudo guardar carpeta/x.csv: MOTIVO": the name as it was given, or nobody knows which x.csv
ErrorGuardado noGuardado(const std::filesystem::path& ruta, std::string_view motivo);

// The files that are read for an output, which never takes the place of one of them. They are known by what
// they are and not by their names: links of either kind, "./" and the like make no difference. One that is
// not there yet is known by its folder and name.
class ArchivosLeidos {
   public:
    void agregar(const std::filesystem::path& ruta);
    // Of descriptors only a regular file is one.
    void agregar(int descriptor);

    // Throws ErrorNombre where the output is one of them.
    void exigirOtro(const std::filesystem::path& salida) const;
    // The name stands in the message only.
    void exigirOtro(int descriptor, std::string_view nombre) const;

   private:
    std::set<std::string> identidades_;
};

// What whoever saves knows of the file.
struct ReglaDestino {
    bool nuevo = false;      // nothing may stand under its name yet
    bool corriente = false;  // a FIFO or a device that takes text will do as well
    // Endings, in lower case, of files of another kind: a name that ends so, in whatever case, is refused,
    // and so is a link to one.
    std::span<const std::string_view> vedadas = {};
    // Says of the first bytes of the file that stands there, at most vista of them, that it is of another
    // kind, which is refused as well; empty: it is not.
    std::function<std::string(std::span<const std::uint8_t>)> porque = {};
    std::size_t vista = 0;
    std::uint64_t bytes = 0;  // that must find room; 0: nobody knows
    ArchivosLeidos leidos = {};
};

struct Destino {
    std::filesystem::path pedido = {};  // as the user names it
    std::filesystem::path ruta = {};    // where its symbolic links end
    bool nuevo = false;
    bool corriente = false;  // not a file: opened and written to, see abrirCorriente
    // Of the regular file that stands there now.
    std::optional<struct stat> previo = {};

    std::filesystem::path carpeta() const;
};

// Throws ErrorGuardado, or the ErrorNombre above, with the file's name and the reason in Spanish where
// writing is refused or bound to fail: a folder that is missing or closed, a file that may not be written or
// read or that would be replaced against the rule, a data base (whatever its name), what this process' output
// or errors go to, too little room, anything that is neither a regular file nor, where the rule lets it, a
// stream. Writes nothing.
Destino revisarDestino(const std::filesystem::path& ruta, const ReglaDestino& regla = {});

// Why nothing may be written where a data base stands, or a file that holds what is not yet in the one beside
// it; empty: there is none.
std::string_view motivoDeBaseDeDatos(const std::filesystem::path& ruta);

// A text that is equal for two names of the same file, also before it is there: of what is there, its place
// on the disk, of anything else the folder's and the name.
std::string identidad(const std::filesystem::path& ruta);
// The same of the regular file behind an open descriptor; nothing for anything else.
std::optional<std::string> identidad(int descriptor);

// The descriptor of a stream, to be written to without waiting; -1 while a FIFO, and nothing else, has no
// reader. The caller closes it. Throws ErrorGuardado.
int abrirCorriente(const Destino& destino);

// The name with something added at its end, cut before it where the whole would be longer than the folder's
// file system takes.
std::filesystem::path conSufijo(const std::filesystem::path& ruta, std::string_view sufijo);

}  // namespace telvane
