// Every control of the main window, with what it is, says and allows once the program has started.
#include <array>

#include <QAbstractButton>
#include <QAccessible>
#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>

#include "tests/window/ventana_prueba.h"
#include "ui/qt/vista_lineas.h"

namespace telvane {
namespace {

enum Estado : unsigned { kNormal = 0, kApagado = 1, kOculto = 2, kBloqueado = 4 };

struct Fila {
    const char* nombre;
    Clase clase;
    const char* caption;
    const char* accesible;
    unsigned estado = kNormal;
    const char* hint = "";
    int maxLength = 0;
};

constexpr auto kTabla = std::to_array<Fila>({
    {"Command1", Clase::boton, "Reconectar con Registrador ?", "Reconectar con Registrador ?"},
    {"configuracion", Clase::boton, "Importar Configuracion", "Importar Configuracion"},
    {"Command2", Clase::boton, "Cambiar configuracion", "Cambiar configuracion", kApagado},
    {"Command3", Clase::boton, "Enviar configuracion", "Enviar configuracion", kApagado},
    {"Command5", Clase::boton, "Coeficientes", "Coeficientes"},
    {"Command4", Clase::boton, "DATOS EN LINEA", "DATOS EN LINEA"},
    {"Command13", Clase::boton, "Importar datos desde equipo y exportar a excell (csv)",
     "Importar datos desde equipo y exportar a excell (csv)"},
    {"Command33", Clase::boton, "Exportar Eventos (.txt) y Base de Datos (.xls)",
     "Exportar Eventos (.txt) y Base de Datos (.xls)"},
    {"Command43", Clase::boton, "Abrir Archivo Base (.rgt)", "Abrir Archivo Base (.rgt)"},
    {"salir", Clase::boton, "Salir", "Salir", kNormal, "Cerrar Programa"},
    {"Option1", Clase::opcion, "1 Minuto", "1 Minuto"},
    {"Option2", Clase::opcion, "5 Minutos", "5 Minutos"},
    {"Option3", Clase::opcion, "10 Minutos", "10 Minutos"},
    {"Option4", Clase::opcion, "15 Minutos", "15 Minutos"},
    {"Option5", Clase::opcion, "30 Minutos", "30 Minutos"},
    {"Option6", Clase::opcion, "60 Minutos", "60 Minutos"},
    // Its label stands beside it; the box has no text of its own.
    {"Check1", Clase::casilla, "", "Ajustar a fecha y hora de PC", kOculto},
    {"Text2", Clase::texto, "", "Usuario", kBloqueado, "", 30},
    {"Text3", Clase::texto, "", "Ubicacion", kBloqueado, "", 35},
    {"Text4", Clase::texto, "", "Latitud", kBloqueado, "", 15},
    {"Text5", Clase::texto, "", "Longitud", kBloqueado, "", 15},
    {"Text7", Clase::texto, "", "Altitud", kBloqueado, "Iniciales operador", 5},
    {"Text10", Clase::texto, "", "Nro de Serie", kNormal, "", 8},
    {"MaskEdBox2", Clase::mascara, "::", "Hora", kBloqueado},
    {"fecha1", Clase::mascara, "//", "Fecha", kBloqueado},
    {"Text60", Clase::textoLargo, "", "Medicion de Datos en linea", kOculto},
    {"RichTextBox1", Clase::textoLargo, "", "Datos"},
    {"RichTextBox2", Clase::textoLargo, "", "Informe"},
    {"Label1", Clase::rotulo, "Nro de Serie", "Nro de Serie"},
    {"Label2", Clase::rotulo, "Usuario", "Usuario"},
    {"Label6", Clase::rotulo, "Ubicacion", "Ubicacion"},
    {"Label7", Clase::rotulo, "Latitud", "Latitud"},
    {"Label13", Clase::rotulo, "Longitud", "Longitud"},
    {"Label8", Clase::rotulo, "Altitud", "Altitud"},
    {"Label5", Clase::rotulo, "Intervalo de Muestreo", "Intervalo de Muestreo"},
    {"Label3", Clase::rotulo, "Ajustar a fecha y hora de PC", "Ajustar a fecha y hora de PC", kOculto},
    {"Label11", Clase::rotulo, "Configuracion", "Configuracion"},
    {"Label9", Clase::rotulo, "Registro De Datos", "Registro De Datos"},
    {"Label10", Clase::rotulo, "Medicion de Datos en linea", "Medicion de Datos en linea"},
    {"Label14", Clase::rotulo, "Estacion Meteorologica Automatica", "Estacion Meteorologica Automatica"},
    {"Label16", Clase::rotulo, "NimbaRIS", "NimbaRIS"},
    {"Label4", Clase::rotulo, "", ""},
    {"Label12", Clase::rotulo, "", ""},
    {"Line1", Clase::linea, "", ""},
    {"Line2", Clase::linea, "", ""},
    {"Line3", Clase::linea, "", ""},
    {"Line4", Clase::linea, "", ""},
    {"Line5", Clase::linea, "", ""},
});

bool esDeSuClase(QWidget* widget, Clase clase) {
    switch (clase) {
        case Clase::boton:
            return dynamic_cast<QPushButton*>(widget) != nullptr;
        case Clase::opcion:
            return dynamic_cast<QRadioButton*>(widget) != nullptr;
        case Clase::casilla:
            return dynamic_cast<QCheckBox*>(widget) != nullptr;
        case Clase::texto:
        case Clase::mascara:
            return dynamic_cast<QLineEdit*>(widget) != nullptr;
        case Clase::textoLargo:
            return dynamic_cast<VistaLineas*>(widget) != nullptr;
        case Clase::rotulo:
            return dynamic_cast<QLabel*>(widget) != nullptr;
        default:
            return dynamic_cast<QFrame*>(widget) != nullptr;
    }
}

QString loQueMuestra(QWidget* widget) {
    if (auto* boton = dynamic_cast<QAbstractButton*>(widget)) return boton->text();
    if (auto* campo = dynamic_cast<QLineEdit*>(widget)) return campo->text();
    if (auto* rotulo = dynamic_cast<QLabel*>(widget)) return rotulo->text();
    if (auto* vista = dynamic_cast<VistaLineas*>(widget)) return vista->todo();
    return {};
}

// The test of a row: the parameter is its place in the table.
class TablaDeControles : public VentanaAlArrancar, public ::testing::WithParamInterface<std::size_t> {
   protected:
    const Fila& fila() const { return kTabla[GetParam()]; }
    QWidget* widget() const {
        auto* mio = ventana.findChild<QWidget*>(QString::fromUtf8(fila().nombre));
        // A sheet at the back is on view once it is chosen.
        auto* hojas = ventana.findChild<QTabWidget*>();
        if (hojas->indexOf(mio) >= 0) hojas->setCurrentWidget(mio);
        return mio;
    }
};

TEST_P(TablaDeControles, IsAsTheTableSays) {
    auto* mio = widget();
    ASSERT_NE(mio, nullptr);
    EXPECT_TRUE(esDeSuClase(mio, fila().clase));
    EXPECT_EQ(texto(loQueMuestra(mio)), fila().caption);
    EXPECT_EQ(texto(mio->toolTip()), fila().hint);
    EXPECT_EQ(mio->isEnabled(), (fila().estado & kApagado) == 0);
    EXPECT_EQ(mio->isHidden(), (fila().estado & kOculto) != 0);
    if (auto* campo = dynamic_cast<QLineEdit*>(mio)) {
        EXPECT_EQ(campo->isReadOnly(), (fila().estado & kBloqueado) != 0);
        EXPECT_NE(campo->focusPolicy() & Qt::TabFocus, 0) << "un campo bloqueado se alcanza con el teclado";
    }
}

TEST_P(TablaDeControles, HasThatNameForAssistiveTechnology) {
    auto* accesible = QAccessible::queryAccessibleInterface(widget());
    ASSERT_NE(accesible, nullptr);
    EXPECT_EQ(texto(accesible->text(QAccessible::Name)), fila().accesible);
    EXPECT_EQ(texto(accesible->text(QAccessible::Description)), fila().hint);
}

TEST_F(VentanaAlArrancar, WhatTheControlDoesNotTakeDoesNotStayInSight) {
    auto* campo = ventana.findChild<QLineEdit*>(QStringLiteral("Text2"));
    ASSERT_NE(campo, nullptr);
    forma.Text2.text = "Ana";
    campo->setReadOnly(false);  // the control itself stays locked
    QTest::keyClick(campo, Qt::Key_1);
    EXPECT_EQ(texto(campo->text()), "Ana");
    EXPECT_EQ(forma.Text2.text(), "Ana");
}

TEST_F(VentanaAlArrancar, EachFieldTakesTheCharactersOfItsWidth) {
    for (auto* control : forma.camposTexto()) control->locked = false;
    for (const auto& fila : kTabla) {
        if (fila.maxLength == 0) continue;
        auto* campo = ventana.findChild<QLineEdit*>(QString::fromUtf8(fila.nombre));
        ASSERT_NE(campo, nullptr);
        for (int i = 0; i < fila.maxLength + 3; ++i) QTest::keyClick(campo, Qt::Key_1);
        EXPECT_EQ(campo->text().size(), fila.maxLength) << fila.nombre;
    }
}

INSTANTIATE_TEST_SUITE_P(inicio, TablaDeControles, ::testing::Range(std::size_t{0}, kTabla.size()),
                         [](const auto& caso) { return std::string(kTabla[caso.param].nombre); });

TEST_F(VentanaAlArrancar, EveryControlWithASurfaceIsInTheTable) {
    for (const auto* control : forma.controles()) {
        if (ventana.widget(*control) == nullptr) continue;
        const bool esta = std::any_of(kTabla.begin(), kTabla.end(),
                                      [&](const Fila& fila) { return control->nombre() == fila.nombre; });
        EXPECT_TRUE(esta || control->nombre() == "Label15") << control->nombre();
    }
}

TEST_F(VentanaAlArrancar, ControlsWithoutASurfaceHaveNoWidget) {
    for (const auto* control :
         {&forma.CommonDialog1, &forma.MSComm1, &forma.MSComm6, &forma.Timer1, &forma.Timer4}) {
        EXPECT_EQ(ventana.widget(*control), nullptr) << control->nombre();
    }
}

TEST_F(VentanaAlArrancar, TheTitleIsTheFormsCaption) {
    EXPECT_EQ(texto(ventana.windowTitle()), "Telvane de VELTRA v1.10");
    EXPECT_EQ(texto(ventana.objectName()), "inicio");
}

}  // namespace
}  // namespace telvane
