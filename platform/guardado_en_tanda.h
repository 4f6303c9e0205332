// Saving many files with one wait for the disk.
#pragma once

#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

#include "platform/guardado.h"

namespace telvane {

// Files are written under temporary names; once enough of them wait, the disk is told to write them all, and
// only then each gets its name. Of every file holds what holds of one that is saved alone: the old one whole
// or the new one whole, and it is called saved when the disk has it. Several threads may add files at once;
// how many wait, and so the memory, has a bound of its own. One that finds no place on the disk is tried
// again once all the others have their names, as it would be alone.
class GuardadoEnTanda {
   public:
    // Why it is not saved; null: it is. ErrorGuardado speaks Spanish and names the file; std::bad_alloc may
    // have been thrown anywhere. It throws nothing itself.
    using AlTerminar = std::function<void(const std::exception_ptr& fallo)>;

    GuardadoEnTanda() = default;
    GuardadoEnTanda(const GuardadoEnTanda&) = delete;
    GuardadoEnTanda& operator=(const GuardadoEnTanda&) = delete;
    // What was not finished is not saved.
    ~GuardadoEnTanda() = default;

    // Writes the file. alTerminar is told once, on any of the threads, now or later, and adds no file itself.
    void agregar(const std::filesystem::path& ruta, std::string_view bytes, const ReglaDestino& regla,
                 const AlTerminar& alTerminar) noexcept;
    // Saves those that wait; afterwards, once no agregar runs any more, every file that was added has been
    // told.
    void terminar() noexcept;

   private:
    // The first file of a disk stays open: its descriptor learns of every failed write since it was opened.
    struct Disco {
        Descriptor testigo;
        bool fallo = false;
    };
    struct Pendiente {
        ArchivoPendiente archivo;
        Disco* disco;  // nullptr: synced already
        AlTerminar alTerminar;
        std::exception_ptr fallo = nullptr;
        const int* carpeta = nullptr;  // what its sync gave
    };
    struct Tanda {
        std::vector<Pendiente> archivos;
        std::map<dev_t, Disco> discos;
    };
    void escribir(ArchivoPendiente archivo, std::string_view bytes, const AlTerminar& alTerminar);
    void quedarSolo() noexcept;
    static void colocar(Tanda tanda) noexcept;

    std::mutex cerrojo_;
    // Held in common by those who place a full batch; taken while cerrojo_ is held.
    std::shared_mutex colocando_;
    Tanda tanda_;
};

}  // namespace telvane
