#include "platform/guardado.h"

#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "apoyo/carpeta_temporal.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;

std::string leer(const fs::path& ruta) {
    std::ifstream archivo(ruta, std::ios::binary);
    return {std::istreambuf_iterator<char>(archivo), std::istreambuf_iterator<char>()};
}

mode_t modoDe(const fs::path& ruta) {
    struct stat datos {};
    EXPECT_EQ(::stat(ruta.c_str(), &datos), 0);
    return datos.st_mode & 07777;
}

class Guardado : public ::testing::Test {
   protected:
    fs::path ruta(const std::string& nombre) const { return carpeta_ / nombre; }
    std::size_t entradas() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(carpeta_), fs::directory_iterator()));
    }
    // The reason with which saving is refused; empty if it is not.
    static std::string negativa(const fs::path& ruta, std::string_view texto = "nuevo") {
        try {
            guardarAtomico(ruta, texto);
        } catch (const ErrorGuardado& error) {
            return error.what();
        }
        return "";
    }

    CarpetaTemporal temporal_;
    const fs::path& carpeta_ = temporal_.ruta();
};

TEST_F(Guardado, creaElArchivoConSusBytes) {
    const std::string bytes("a\0b\r\n\xFF", 6);
    guardarAtomico(ruta("x.csv"), bytes);
    EXPECT_EQ(leer(ruta("x.csv")), bytes);
    EXPECT_EQ(entradas(), 1u);
}

TEST_F(Guardado, unArchivoVacioTambienSeGuarda) {
    guardarAtomico(ruta("x.csv"), "viejo");
    guardarAtomico(ruta("x.csv"), "");
    EXPECT_EQ(leer(ruta("x.csv")), "");
}

TEST_F(Guardado, reemplazaElContenidoYConservaElModo) {
    guardarAtomico(ruta("x.csv"), "viejo y largo");
    fs::permissions(ruta("x.csv"), fs::perms(0640));
    guardarAtomico(ruta("x.csv"), "nuevo");
    EXPECT_EQ(leer(ruta("x.csv")), "nuevo");
    EXPECT_EQ(modoDe(ruta("x.csv")), mode_t{0640});
    EXPECT_EQ(entradas(), 1u);
}

TEST_F(Guardado, unArchivoNuevoSigueLaMascaraDelUsuario) {
    const auto antes = ::umask(027);
    guardarAtomico(ruta("x.csv"), "nuevo");
    const auto despues = ::umask(antes);
    EXPECT_EQ(modoDe(ruta("x.csv")), mode_t{0640});
    EXPECT_EQ(despues, mode_t{027}) << "the mask is left as it was";
}

TEST_F(Guardado, unEnlaceSeEscribeDondeApunta) {
    fs::create_directory(ruta("otra"));
    guardarAtomico(ruta("otra/x.csv"), "viejo");
    fs::create_symlink("otra/x.csv", ruta("enlace"));
    fs::create_symlink("enlace", ruta("enlace2"));
    guardarAtomico(ruta("enlace2"), "nuevo");
    EXPECT_EQ(leer(ruta("otra/x.csv")), "nuevo");
    EXPECT_TRUE(fs::is_symlink(ruta("enlace")));
    EXPECT_TRUE(fs::is_symlink(ruta("enlace2")));
}

TEST_F(Guardado, unEnlaceSinDestinoLoCrea) {
    fs::create_symlink(ruta("x.csv"), ruta("enlace"));
    guardarAtomico(ruta("enlace"), "nuevo");
    EXPECT_FALSE(fs::is_symlink(ruta("x.csv")));
    EXPECT_EQ(leer(ruta("x.csv")), "nuevo");
}

TEST_F(Guardado, unEnlaceQueSeMuerdeLaColaSeNiega) {
    fs::create_symlink("b", ruta("a"));
    fs::create_symlink("a", ruta("b"));
    EXPECT_EQ(negativa(ruta("a")), "no se pudo guardar a: demasiados enlaces seguidos");
}

TEST_F(Guardado, unaCarpetaSeNiega) {
    fs::create_directory(ruta("datos"));
    EXPECT_EQ(negativa(ruta("datos")), "no se pudo guardar datos: es una carpeta");
    EXPECT_EQ(entradas(), 1u);
}

TEST_F(Guardado, loQueNoEsUnArchivoNormalSeNiegaYQuedaComoEstaba) {
    ASSERT_EQ(::mkfifo(ruta("tubo").c_str(), 0600), 0);
    EXPECT_EQ(negativa(ruta("tubo")), "no se pudo guardar tubo: no es un archivo normal");
    EXPECT_TRUE(fs::is_fifo(ruta("tubo")));
    EXPECT_EQ(negativa("/dev/null"), "no se pudo guardar null: no es un archivo normal");
}

TEST_F(Guardado, unaCarpetaQueNoExisteSeNiega) {
    EXPECT_EQ(negativa(ruta("nada/x.csv")),
              "no se pudo guardar x.csv: no existe la carpeta " + ruta("nada").string());
}

TEST_F(Guardado, unaCarpetaQueEsUnArchivoSeNiega) {
    guardarAtomico(ruta("x"), "viejo");
    EXPECT_EQ(negativa(ruta("x/y.csv")), "no se pudo guardar y.csv: una parte de la ruta no es una carpeta");
}

TEST_F(Guardado, unNombreDelMayorLargoCabeYUnoMasLargoSeNiega) {
    const std::string largo(255, 'n');
    guardarAtomico(ruta(largo), "nuevo");
    EXPECT_EQ(leer(ruta(largo)), "nuevo");
    EXPECT_EQ(negativa(ruta(largo + "n")), "no se pudo guardar " + largo + "n: el nombre es demasiado largo");
    EXPECT_EQ(entradas(), 1u);
}

// Saves as a user who is not root, in a child, and ends it with status 0 if the reason is the expected one.
[[noreturn]] void guardarComoCualquiera(const fs::path& ruta, const std::string& motivo) {
    constexpr uid_t kNadie = 65534;
    const bool otro = ::geteuid() != 0 || ::setuid(kNadie) == 0;
    std::string dicho;
    try {
        guardarAtomico(ruta, "nuevo");
    } catch (const ErrorGuardado& error) {
        dicho = error.what();
    }
    std::fprintf(stderr, "%s\n", dicho.c_str());
    ::_exit(otro && dicho == motivo ? 0 : 1);
}

TEST_F(Guardado, unArchivoProtegidoContraEscrituraSeNiegaAunqueLaCarpetaNoLoEste) {
    guardarAtomico(ruta("x.csv"), "viejo");
    fs::permissions(ruta("x.csv"), fs::perms(0444));
    fs::permissions(carpeta_, fs::perms(0777));
    EXPECT_EXIT(guardarComoCualquiera(ruta("x.csv"), "no se pudo guardar x.csv: no hay permiso"),
                ::testing::ExitedWithCode(0), "");
    EXPECT_EQ(leer(ruta("x.csv")), "viejo");
    EXPECT_EQ(entradas(), 1u);
}

TEST_F(Guardado, unaCarpetaProtegidaContraEscrituraSeNiega) {
    guardarAtomico(ruta("x.csv"), "viejo");
    fs::permissions(ruta("x.csv"), fs::perms(0666));
    fs::permissions(carpeta_, fs::perms(0555));
    EXPECT_EXIT(guardarComoCualquiera(ruta("x.csv"), "no se pudo guardar x.csv: no hay permiso"),
                ::testing::ExitedWithCode(0), "");
    EXPECT_EQ(leer(ruta("x.csv")), "viejo");
    fs::permissions(carpeta_, fs::perms(0755));
}

// While it lives a write beyond this length fails with EFBIG.
class LimiteDeArchivo {
   public:
    explicit LimiteDeArchivo(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &antes_);
        senial_ = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limite{bytes, antes_.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limite), 0);
    }
    LimiteDeArchivo(const LimiteDeArchivo&) = delete;
    LimiteDeArchivo& operator=(const LimiteDeArchivo&) = delete;
    ~LimiteDeArchivo() {
        ::setrlimit(RLIMIT_FSIZE, &antes_);
        std::signal(SIGXFSZ, senial_);
    }

   private:
    rlimit antes_{};
    void (*senial_)(int) = nullptr;
};

TEST_F(Guardado, unaEscrituraQueFallaAMitadDejaElArchivoViejoYNingunTemporal) {
    guardarAtomico(ruta("x.csv"), "viejo");
    std::string motivo;
    {
        const LimiteDeArchivo limite(4096);
        motivo = negativa(ruta("x.csv"), std::string(100000, 'x'));
    }
    EXPECT_EQ(motivo, "no se pudo guardar x.csv: el archivo es demasiado grande");
    EXPECT_EQ(leer(ruta("x.csv")), "viejo");
    EXPECT_EQ(entradas(), 1u);
}

// A small disk of its own, where mounting is allowed.
class DiscoChico {
   public:
    explicit DiscoChico(const fs::path& carpeta) : carpeta_(carpeta) {
        fs::create_directory(carpeta_);
        montado_ = ::mount("tmpfs", carpeta_.c_str(), "tmpfs", 0, "size=64k") == 0;
    }
    DiscoChico(const DiscoChico&) = delete;
    DiscoChico& operator=(const DiscoChico&) = delete;
    ~DiscoChico() {
        if (montado_) ::umount(carpeta_.c_str());
    }
    bool montado() const { return montado_; }
    bool soloLectura() const {
        return ::mount(nullptr, carpeta_.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

   private:
    fs::path carpeta_;
    bool montado_ = false;
};

TEST_F(Guardado, unDiscoLlenoDejaElArchivoViejoYNingunTemporal) {
    const DiscoChico disco(ruta("disco"));
    if (!disco.montado()) GTEST_SKIP() << "mounting is not permitted here";
    guardarAtomico(ruta("disco/x.csv"), "viejo");
    EXPECT_EQ(negativa(ruta("disco/x.csv"), std::string(100000, 'x')),
              "no se pudo guardar x.csv: no queda espacio en el disco");
    EXPECT_EQ(leer(ruta("disco/x.csv")), "viejo");
    EXPECT_EQ(std::distance(fs::directory_iterator(ruta("disco")), fs::directory_iterator()), 1);
}

TEST_F(Guardado, unDiscoDeSoloLecturaSeNiegaYQuedaComoEstaba) {
    const DiscoChico disco(ruta("disco"));
    if (!disco.montado()) GTEST_SKIP() << "mounting is not permitted here";
    guardarAtomico(ruta("disco/x.csv"), "viejo");
    ASSERT_TRUE(disco.soloLectura());
    EXPECT_EQ(negativa(ruta("disco/x.csv")), "no se pudo guardar x.csv: el disco es de solo lectura");
    EXPECT_EQ(negativa(ruta("disco/otro.csv")), "no se pudo guardar otro.csv: el disco es de solo lectura");
    EXPECT_EQ(leer(ruta("disco/x.csv")), "viejo");
}

TEST(MotivoSistema, losErroresDeArchivosYPuertosTienenSuFrase) {
    for (const int numero :
         {EACCES, EAGAIN, EBUSY,  EDQUOT, EFBIG,   EINVAL, EIO,   EISDIR, ELOOP, EMFILE, ENAMETOOLONG,
          ENODEV, ENOENT, ENOMEM, ENOSPC, ENOTDIR, ENOTTY, ENXIO, EPERM,  EROFS, ETXTBSY}) {
        EXPECT_EQ(motivoSistema(numero).find("error "), std::string::npos) << numero;
    }
    EXPECT_EQ(motivoSistema(ENOSPC), "no queda espacio en el disco");
}

TEST(MotivoSistema, losDemasDanSuNumero) {
    EXPECT_EQ(motivoSistema(9999), "error 9999 del sistema");
    EXPECT_EQ(motivoSistema(0), "error 0 del sistema");
}

}  // namespace
}  // namespace telvane
