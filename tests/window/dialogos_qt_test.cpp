// Message boxes and file dialogs of the desktop: what they say, and what their answers mean.
#include "app/qt/dialogos_qt.h"

#include <algorithm>
#include <fstream>
#include <optional>

#include <QAccessible>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QScopeGuard>
#include <QScreen>
#include <QStandardPaths>
#include <QTimer>
#include <QTreeView>

#include "app/qt/bucle_qt.h"
#include "data/informe.h"
#include "tests/window/ventana_prueba.h"

namespace telvane {
namespace {

using Lista = std::vector<std::string>;
using Ruta = std::optional<std::filesystem::path>;

template <class Dialogo>
Dialogo* abierto() {
    for (auto* ventana : QApplication::topLevelWidgets()) {
        auto* dialogo = dynamic_cast<Dialogo*>(ventana);
        if (dialogo != nullptr && dialogo->isVisible()) return dialogo;
    }
    return nullptr;
}

Lista botones(const QMessageBox& caja) {
    Lista textos;
    for (const auto* boton : caja.buttons()) textos.push_back(texto(boton->text()));
    return textos;
}

class Cajas : public ::testing::Test {
   protected:
    QMessageBox& preguntar(const Mensaje& mensaje) {
        dialogos.mensaje(mensaje, [this](Boton boton) { respuesta = boton; });
        auto* caja = abierto<QMessageBox>();
        if (caja == nullptr) throw std::logic_error("no hay caja");
        return *caja;
    }
    // As the display delivers it, at a moment of its own: to the window, which hands it to whoever has the
    // focus.
    void suceder(QWidget& en, QEvent::Type que, Qt::Key tecla, bool repetida = false) {
        QKeyEvent suceso(que, tecla, Qt::NoModifier, QStringLiteral("\r"), repetida);
        suceso.setTimestamp(milisegundo);
        QCoreApplication::sendEvent(en.windowHandle(), &suceso);
    }
    void teclear(QWidget& en, Qt::Key tecla, bool repetida = false) {
        ++milisegundo;
        suceder(en, QEvent::KeyPress, tecla, repetida);
    }
    void soltar(QWidget& en, Qt::Key tecla) {
        ++milisegundo;
        suceder(en, QEvent::KeyRelease, tecla);
    }
    void cerrada() {
        EXPECT_TRUE(QTest::qWaitFor([&] { return abierto<QMessageBox>() == nullptr; }));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    BucleQt bucle;
    RelojSistema reloj;
    DialogosQt dialogos{bucle, reloj};
    std::optional<Boton> respuesta;
    std::uint64_t milisegundo = 1'000;
};

TEST_F(Cajas, TheTextIsShownPlainWithItsBlanksAndLineEnds) {
    auto& caja = preguntar(Mensaje(" <b>a</b> \r\nb\rc  "));
    EXPECT_EQ(texto(caja.windowTitle()), "Telvane");
    EXPECT_EQ(caja.textFormat(), Qt::PlainText);
    EXPECT_EQ(texto(caja.text()), " <b>a</b> \nb\nc  ");
    EXPECT_EQ(caja.icon(), QMessageBox::NoIcon);
    EXPECT_EQ(botones(caja), Lista{"Aceptar"});
    caja.buttons().front()->click();
    EXPECT_EQ(respuesta, Boton::aceptar);
    cerrada();
}

TEST_F(Cajas, WithLargeLettersNothingIsCutAndTheButtonsStandOnTheScreen) {
    const auto antes = QApplication::font();
    const auto vuelve = qScopeGuard([&] { QApplication::setFont(antes); });
    auto grandes = antes;
    grandes.setPixelSize(27);
    QApplication::setFont(grandes);
    std::string largo;
    for (int i = 0; i < 30; ++i) largo += "Separador de Miles Monetario: \r";
    for (const auto& dicho : {std::string("No Hay\r\n        servicio.tecnico@veltra.example     "), largo}) {
        auto& caja = preguntar(Mensaje(dicho, Botones::aceptarCancelar, Icono::exclamacion));
        const auto* dentro = caja.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
        ASSERT_NE(dentro, nullptr);
        const auto entera = dentro->fontMetrics().boundingRect(QRect(), Qt::AlignLeft, caja.text());
        EXPECT_GE(dentro->width(), entera.width());
        EXPECT_GE(dentro->height(), entera.height());
        const auto pantalla = caja.screen()->availableSize();
        EXPECT_LE(caja.width(), pantalla.width());
        EXPECT_LE(caja.height(), pantalla.height());
        for (const auto* boton : caja.buttons())
            EXPECT_TRUE(caja.rect().contains(QRect(boton->mapTo(&caja, QPoint()), boton->size())))
                << texto(boton->text());
        caja.buttons().front()->click();
        cerrada();
    }
}

TEST_F(Cajas, TheButtonsSayTheSameWithoutAnInstalledTranslation) {
    auto& si = preguntar(Mensaje("x", Botones::siNo));
    EXPECT_EQ(botones(si), (Lista{"Sí", "No"}));
    si.buttons().front()->click();
    EXPECT_EQ(respuesta, Boton::si);
    cerrada();
    auto& aceptar = preguntar(Mensaje("x", Botones::aceptarCancelar, Icono::exclamacion));
    EXPECT_EQ(botones(aceptar), (Lista{"Aceptar", "Cancelar"}));
    EXPECT_EQ(aceptar.icon(), QMessageBox::Warning);
    EXPECT_EQ(texto(aceptar.defaultButton()->text()), "Aceptar");
    aceptar.buttons().back()->click();
    EXPECT_EQ(respuesta, Boton::cancelar);
    cerrada();
}

TEST_F(Cajas, EnterGivesTheDefaultAnswer) {
    auto& caja =
        preguntar(Mensaje("x", Botones::aceptarCancelar, Icono::exclamacion).conPorDefecto(Boton::cancelar));
    EXPECT_EQ(texto(caja.defaultButton()->text()), "Cancelar");
    QTest::keyClick(&caja, Qt::Key_Return);
    EXPECT_EQ(respuesta, Boton::cancelar);
    cerrada();
}

TEST_F(Cajas, AKeyThatWasAlreadyDownAnswersNothing) {
    auto& caja = preguntar(Mensaje("x", Botones::siNo));
    for (const auto tecla : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Escape}) {
        teclear(caja, tecla, true);
        soltar(caja, tecla);
    }
    EXPECT_FALSE(respuesta.has_value());
    teclear(caja, Qt::Key_Return);
    EXPECT_EQ(respuesta, Boton::si);
    cerrada();
}

TEST_F(Cajas, AHeldKeyThatGoesUpAndDownInOneInstantIsStillTheSameStroke) {
    auto& caja = preguntar(Mensaje("x", Botones::siNo));
    for (int repeticion = 0; repeticion < 3; ++repeticion) {
        soltar(caja, Qt::Key_Return);
        suceder(caja, QEvent::KeyPress, Qt::Key_Return);
        EXPECT_FALSE(respuesta.has_value());
    }
    soltar(caja, Qt::Key_Return);
    teclear(caja, Qt::Key_Return);
    EXPECT_EQ(respuesta, Boton::si) << "pressed anew";
    cerrada();
}

TEST_F(Cajas, TheSecondOfTwoQuickStrokesDoesNotAnswerWhatAppearedBetweenThem) {
    auto& primera = preguntar(Mensaje("x", Botones::siNo));
    teclear(primera, Qt::Key_Return);
    ASSERT_EQ(respuesta, Boton::si);
    cerrada();
    respuesta.reset();
    auto& segunda = preguntar(Mensaje("y", Botones::siNo));
    teclear(segunda, Qt::Key_Return);
    EXPECT_FALSE(respuesta.has_value());
    soltar(segunda, Qt::Key_Return);
    // Another key, or the same one later, is meant.
    teclear(segunda, Qt::Key_Escape);
    EXPECT_EQ(respuesta, Boton::no);
    cerrada();
}

TEST_F(VentanaSuelta, AfterABoxTheKeyboardIsOfWhatIsUnderWay) {
    BucleQt bucle;
    const RelojSistema reloj;
    DialogosQt dialogos(bucle, reloj);
    QWidget enCurso(&ventana, Qt::Dialog);
    dialogos.ventana(&ventana, [&] { return &enCurso; });
    enCurso.show();
    ventana.activateWindow();
    ASSERT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == &ventana; }));
    dialogos.mensaje(Mensaje("x"), [](Boton) {});
    ASSERT_TRUE(QTest::qWaitFor([&] { return abierto<QMessageBox>() != nullptr; }));
    abierto<QMessageBox>()->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == &enCurso; }));
}

TEST_F(Cajas, ClosingTheBoxIsItsNegativeAnswer) {
    QTest::keyClick(&preguntar(Mensaje("x", Botones::siNo)), Qt::Key_Escape);
    EXPECT_EQ(respuesta, Boton::no);
    cerrada();
    preguntar(Mensaje("x", Botones::aceptarCancelar)).close();
    EXPECT_EQ(respuesta, Boton::cancelar);
    cerrada();
    preguntar(Mensaje("x", Botones::aceptar, Icono::critico)).close();
    EXPECT_EQ(respuesta, Boton::aceptar);
    cerrada();
}

TEST_F(Cajas, NothingWaitsWhileTheBoxIsOpen) {
    auto& caja = preguntar(Mensaje("x"));
    EXPECT_FALSE(respuesta.has_value());
    EXPECT_TRUE(caja.isModal());
    caja.close();
    cerrada();
}

TEST_F(Cajas, APauseHoldsTheAnswerBack) {
    auto& caja = preguntar(Mensaje("x"));
    bucle.pausar(std::chrono::milliseconds(30), [] {});
    caja.close();
    EXPECT_FALSE(respuesta.has_value());
    EXPECT_TRUE(QTest::qWaitFor([&] { return respuesta.has_value(); }));
    EXPECT_EQ(respuesta, Boton::aceptar);
    cerrada();
}

// Its owner may be asked by assistive technology, which neither mouse nor keyboard is.
class Tapada : public Cajas {
   protected:
    Tapada() {
        forma.mostrar();
        QApplication::processEvents();
    }

    FormaInicio forma;
    UsuarioPrueba hecho;
    VentanaInicio ventana{forma, hecho.usuario()};
};

TEST_F(Tapada, BehindABoxNothingIsPressedMarkedOrWritten) {
    auto* boton = dynamic_cast<QPushButton*>(ventana.widget(forma.Command13));
    auto* opcion = dynamic_cast<QRadioButton*>(ventana.widget(forma.Option5));
    auto* campo = dynamic_cast<QLineEdit*>(ventana.widget(forma.Text4));
    auto* serie = dynamic_cast<QLineEdit*>(ventana.widget(forma.Text10));
    std::string teclas;
    forma.Text10.alTeclear = [&](int& tecla) { teclas += static_cast<char>(tecla); };
    const auto hacerTodo = [&] {
        boton->click();
        opcion->click();
        const auto escribir = [](QLineEdit& en, const QString& nuevo) {
            auto* accesible = QAccessible::queryAccessibleInterface(&en);
            accesible->editableTextInterface()->replaceText(0, static_cast<int>(en.text().size()), nuevo);
        };
        escribir(*campo, QStringLiteral("34 S"));
        escribir(*serie, QStringLiteral("7"));
        QApplication::processEvents();
    };
    auto& caja = preguntar(Mensaje("x"));
    hacerTodo();
    EXPECT_EQ(hecho.pulsados, Lista{});
    EXPECT_EQ(hecho.cambiados, Lista{});
    EXPECT_EQ(teclas, "");
    EXPECT_FALSE(opcion->isChecked());
    EXPECT_EQ(texto(campo->text()), "") << "what was not taken does not stay on show";
    EXPECT_EQ(texto(serie->text()), "");
    caja.buttons().front()->click();
    EXPECT_EQ(respuesta, Boton::aceptar) << "the box itself is reached";
    cerrada();
    hacerTodo();
    EXPECT_EQ(hecho.pulsados, (Lista{"Command13", "Option5"}));
    EXPECT_EQ(hecho.cambiados, (Lista{"Text4=34 S", "Text10=7"}));
    EXPECT_EQ(teclas, "7");
}

TEST_F(Tapada, ItsFrameEndsTheProgramAllTheSame) {
    auto& caja = preguntar(Mensaje("x"));
    ventana.close();
    EXPECT_EQ(hecho.pulsados, Lista{"salir"});
    caja.buttons().front()->click();
    cerrada();
}

TEST_F(VentanaSuelta, TheFirstQuestionWaitsForTheWindow) {
    FormaInicio otra;
    VentanaInicio nueva(otra, hecho.usuario());
    BucleQt bucle;
    const RelojSistema reloj;
    DialogosQt dialogos(bucle, reloj);
    dialogos.ventana(&nueva);
    otra.mostrar();
    dialogos.mensaje(Mensaje("x"), [](Boton) {});
    EXPECT_EQ(abierto<QMessageBox>(), nullptr);
    EXPECT_TRUE(QTest::qWaitFor([&] { return abierto<QMessageBox>() != nullptr; }));
    EXPECT_TRUE(nueva.enPantalla());
    abierto<QMessageBox>()->close();
}

// Hears of every message box, from inside the loop in which it waits for its answer.
class CajasQueAparecen : public QObject {
   public:
    CajasQueAparecen() { QCoreApplication::instance()->installEventFilter(this); }

    int cuantas() const { return cuantas_; }

    std::function<void(QMessageBox&)> alAparecer;

   private:
    bool eventFilter(QObject* objeto, QEvent* suceso) override {
        auto* caja = suceso->type() == QEvent::Show ? dynamic_cast<QMessageBox*>(objeto) : nullptr;
        if (caja != nullptr) {
            ++cuantas_;
            QTimer::singleShot(0, caja, [this, caja] { alAparecer(*caja); });
        }
        return false;
    }

    int cuantas_ = 0;
};

class Archivos : public ::testing::Test {
   protected:
    QFileDialog& pedir(const PeticionArchivo& peticion) {
        dialogos.archivo(peticion, [this](const Ruta& cual) { elegido.push_back(cual); });
        auto* dialogo = abierto<QFileDialog>();
        if (dialogo == nullptr) throw std::logic_error("no hay diálogo");
        dialogo->setDirectory(QString::fromStdString(carpeta.ruta().string()));
        return *dialogo;
    }
    void escribirNombre(QFileDialog& dialogo, const QString& nombre) {
        auto* campo = dialogo.findChild<QLineEdit*>("fileNameEdit");
        ASSERT_NE(campo, nullptr);
        campo->setText(nombre);
        QMetaObject::invokeMethod(&dialogo, "accept");
    }

    const PeticionArchivo csv{.guardar = true,
                              .filtro = "datos excel (*.CSV)|*.CSV",
                              .carpeta = "C:\\Mis Documentos\\",
                              .nombre = "Finca Norte 7_3_2004"};
    CarpetaTemporal carpeta;
    BucleQt bucle;
    RelojSistema reloj;
    DialogosQt dialogos{bucle, reloj};
    std::vector<Ruta> elegido;
};

TEST_F(Archivos, SavingProposesTheNameAndAddsTheEnding) {
    auto& dialogo = pedir(csv);
    EXPECT_EQ(dialogo.acceptMode(), QFileDialog::AcceptSave);
    EXPECT_TRUE(dialogo.windowTitle().endsWith("C:\\Mis Documentos\\"));
    EXPECT_EQ(dialogo.nameFilters(), QStringList{"datos excel (*.CSV)"});
    auto* campo = dialogo.findChild<QLineEdit*>("fileNameEdit");
    EXPECT_EQ(texto(campo->text()), "Finca Norte 7_3_2004");
    escribirNombre(dialogo, "datos");
    ASSERT_EQ(elegido.size(), 1U);
    EXPECT_EQ(elegido[0], carpeta.ruta() / "datos.CSV");
}

TEST_F(Archivos, ANameWithADotIsNotLeftWithoutAnEnding) {
    auto peticion = csv;
    peticion.nombre = "Est. Norte 7_3_2004";
    auto& dialogo = pedir(peticion);
    EXPECT_EQ(texto(dialogo.findChild<QLineEdit*>("fileNameEdit")->text()), "Est. Norte 7_3_2004.CSV");
    dialogo.reject();
}

TEST_F(Archivos, WhatIsProposedIsWhatIsSaved) {
    const FechaHora momento{2004, 3, 7, {}};
    for (const auto* ubicacion : {"Finca \"Norte\"", "6\" pozo", "\"~nobody\"", "~nobody", "~", "../x", "-rf",
                                  ".x", "Est. 3", "$HOME", "%41 #1 ?x=1"}) {
        auto peticion = csv;
        peticion.nombre = nombreCsv(ubicacion, momento);
        auto& dialogo = pedir(peticion);
        QMetaObject::invokeMethod(&dialogo, "accept");
        ASSERT_FALSE(elegido.empty()) << ubicacion;
        EXPECT_EQ(elegido.back(), carpeta.ruta() / (peticion.nombre + ".CSV")) << ubicacion;
        elegido.clear();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(Archivos, ATypedNameGetsItsEnding) {
    const std::vector<std::pair<QString, std::string>> casos = {
        {"Est. Norte", "Est. Norte.CSV"}, {"v1.2", "v1.2.CSV"},          {"datos.csv", "datos.csv"},
        {"datos.CSV", "datos.CSV"},       {"datos.", "datos.CSV"},       {"datos.txt", "datos.txt.CSV"},
        {"6\" pozo", "6_ pozo.CSV"},      {"sub.dir/a", "sub.dir/a.CSV"}};
    std::filesystem::create_directory(carpeta.ruta() / "sub.dir");
    for (const auto& [nombre, archivo] : casos) {
        escribirNombre(pedir(csv), nombre);
        ASSERT_FALSE(elegido.empty()) << archivo;
        EXPECT_EQ(elegido.back(), carpeta.ruta() / archivo);
        elegido.clear();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(Archivos, AFoldersNameGoesIntoIt) {
    const auto dentro = carpeta.ruta() / "sub.dir" / "otra.v2";
    std::filesystem::create_directories(dentro);
    // The toolkit marks in its list what is typed, and takes what is marked; while somebody types, nothing
    // else.
    for (const auto& [nombre, lugar] : {std::pair{std::string("sub.dir"), dentro.parent_path()},
                                        {"sub.dir/otra.v2", dentro},
                                        {dentro, dentro}}) {
        auto& dialogo = pedir(csv);
        QApplication::setActiveWindow(&dialogo);
        dialogo.findChild<QLineEdit*>("fileNameEdit")->setFocus();
        escribirNombre(dialogo, QString::fromStdString(nombre));
        EXPECT_TRUE(elegido.empty()) << nombre;
        elegido.clear();
        EXPECT_EQ(texto(dialogo.directory().path()), lugar.string()) << nombre;
        dialogo.reject();
        elegido.clear();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(Archivos, WhileItAsksWhetherToReplaceAFileItIsNeitherClosedNorAskedAgain) {
    std::ofstream(carpeta.ruta() / "datos.CSV") << "viejo";
    auto& dialogo = pedir(csv);
    CajasQueAparecen preguntas;
    preguntas.alAparecer = [&](QMessageBox& pregunta) {
        // Each stands in a loop of its own: a second one would wait for an answer that nobody gives.
        if (preguntas.cuantas() == 1) {
            QMetaObject::invokeMethod(&dialogo, "accept");
            if (preguntas.cuantas() == 1) QMetaObject::invokeMethod(&dialogo, "reject");
            EXPECT_TRUE(dialogo.isVisible());
            EXPECT_TRUE(elegido.empty());
        }
        pregunta.reject();
    };
    escribirNombre(dialogo, "datos");
    EXPECT_EQ(preguntas.cuantas(), 1);
    EXPECT_TRUE(elegido.empty()) << "the old file stays";
    EXPECT_TRUE(dialogo.isVisible());
    dialogo.reject();
    EXPECT_EQ(elegido, std::vector<Ruta>{std::nullopt});
}

TEST_F(Archivos, CancellingChoosesNothing) {
    pedir(csv).reject();
    EXPECT_EQ(elegido, std::vector<Ruta>{std::nullopt});
}

TEST_F(Archivos, OpeningAsksForAFileThatIsThere) {
    std::ofstream(carpeta.ruta() / "base.rgt") << "x";
    auto& dialogo = pedir({.guardar = false,
                           .filtro = "datos base (*.rgt)|*.rgt",
                           .carpeta = "C:\\mis Documentos\\",
                           .nombre = ""});
    EXPECT_EQ(dialogo.acceptMode(), QFileDialog::AcceptOpen);
    EXPECT_EQ(dialogo.fileMode(), QFileDialog::ExistingFile);
    escribirNombre(dialogo, "base.rgt");
    ASSERT_EQ(elegido.size(), 1U);
    EXPECT_EQ(elegido[0], carpeta.ruta() / "base.rgt");
}

TEST_F(Archivos, TheNameHasRoomWithLargeLettersAsWell) {
    const auto antes = QApplication::font();
    auto grandes = antes;
    grandes.setPointSize(20);
    QApplication::setFont(grandes);
    std::ofstream(carpeta.ruta() / "Finca Norte 21_11_2026.CSV") << "x";
    auto& dialogo = pedir(csv);
    dialogo.resize(1272, 900);
    auto* lista = dialogo.findChild<QTreeView*>("treeView");
    ASSERT_NE(lista, nullptr);
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return lista->columnWidth(0) >= lista->fontMetrics().horizontalAdvance("Finca Norte 21_11_2026.CSV");
    }));
    EXPECT_TRUE(lista->isColumnHidden(2)) << "the kind goes first";
    EXPECT_FALSE(lista->isColumnHidden(3));
    dialogo.resize(dialogo.fontMetrics().averageCharWidth() * 72, 900);
    EXPECT_TRUE(lista->isColumnHidden(3)) << "with icons as large as the letters the name needs its room";
    dialogo.reject();
    QApplication::setFont(antes);
}

TEST_F(Archivos, OpensInTheUsersDocumentsFolder) {
    dialogos.archivo(csv, [](const Ruta&) {});
    auto* dialogo = abierto<QFileDialog>();
    ASSERT_NE(dialogo, nullptr);
    const QDir documentos(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    EXPECT_EQ(dialogo->directory(), documentos.exists() ? documentos : QDir::home());
    dialogo->reject();
}

}  // namespace
}  // namespace telvane
