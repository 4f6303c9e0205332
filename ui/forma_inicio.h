// The main form: every control by its designer name, with its caption, hint and state at load.
#pragma once

#include <array>

#include "ui/formulario.h"
#include "ui/textos.h"

namespace telvane {

struct FormaInicio final : Formulario {
    FormaInicio() : Formulario("inicio", "Telvane de VELTRA v1.10") {}

    // Connection
    Control Command1{*this, "Command1", Clase::boton, {.caption = "Reconectar con Registrador ?"}};

    // Configuration
    Control configuracion{*this, "configuracion", Clase::boton, {.caption = "Importar Configuracion"}};
    Control Command2{*this, "Command2", Clase::boton, {.caption = "Cambiar configuracion"}};
    Control Command3{*this, "Command3", Clase::boton, {.caption = "Enviar configuracion"}};
    Control Command5{*this, "Command5", Clase::boton, {.caption = "Coeficientes"}};

    // Live data, download, exports
    Control Command4{*this, "Command4", Clase::boton, {.caption = textos::kEnLinea}};
    Control Command13{*this,
                      "Command13",
                      Clase::boton,
                      {.caption = "Importar datos desde equipo y exportar a excell (csv)"}};
    Control Command33{
        *this, "Command33", Clase::boton, {.caption = "Exportar Eventos (.txt) y Base de Datos (.xls)"}};
    Control Command43{*this, "Command43", Clase::boton, {.caption = "Abrir Archivo Base (.rgt)"}};
    Control salir{*this, "salir", Clase::boton, {.caption = "Salir", .hint = "Cerrar Programa"}};

    // Sampling interval
    Control Option1{*this, "Option1", Clase::opcion, {.caption = "1 Minuto"}};
    Control Option2{*this, "Option2", Clase::opcion, {.caption = "5 Minutos"}};
    Control Option3{*this, "Option3", Clase::opcion, {.caption = "10 Minutos"}};
    Control Option4{*this, "Option4", Clase::opcion, {.caption = "15 Minutos"}};
    Control Option5{*this, "Option5", Clase::opcion, {.caption = "30 Minutos"}};
    Control Option6{*this, "Option6", Clase::opcion, {.caption = "60 Minutos"}};

    Control Check1{*this,
                   "Check1",
                   Clase::casilla,
                   {.caption = "Check1", .nombreAccesible = "Ajustar a fecha y hora de PC"}};

    // Configuration fields; a field takes no more than the width that the logger keeps.
    Control Text2{*this, "Text2", Clase::texto, {.nombreAccesible = "Usuario", .maxLength = 30}};
    Control Text3{*this, "Text3", Clase::texto, {.nombreAccesible = "Ubicacion", .maxLength = 35}};
    Control Text4{*this, "Text4", Clase::texto, {.nombreAccesible = "Latitud", .maxLength = 15}};
    Control Text5{*this, "Text5", Clase::texto, {.nombreAccesible = "Longitud", .maxLength = 15}};
    Control Text7{*this,
                  "Text7",
                  Clase::texto,
                  {.hint = "Iniciales operador", .nombreAccesible = "Altitud", .maxLength = 5}};
    Control Text10{*this, "Text10", Clase::texto, {.nombreAccesible = "Nro de Serie", .maxLength = 8}};
    // Shown during a live exchange only.
    Control Text60{*this,
                   "Text60",
                   Clase::textoLargo,
                   {.nombreAccesible = "Medicion de Datos en linea", .visible = false, .locked = true}};
    Control MaskEdBox2{*this, "MaskEdBox2", Clase::mascara, {.nombreAccesible = "Hora", .mask = "##:##:##"}};
    Control fecha1{*this, "fecha1", Clase::mascara, {.nombreAccesible = "Fecha", .mask = "##/##/####"}};

    // Work texts of the exports
    Control RichTextBox1{
        *this, "RichTextBox1", Clase::textoLargo, {.nombreAccesible = "Datos", .locked = true}};
    Control RichTextBox2{
        *this, "RichTextBox2", Clase::textoLargo, {.nombreAccesible = "Informe", .locked = true}};

    // Controls without a surface
    Control CommonDialog1{*this, "CommonDialog1", Clase::dialogo, {}};
    Control MSComm1{*this, "MSComm1", Clase::canal, {}};
    Control MSComm2{*this, "MSComm2", Clase::canal, {}};
    Control MSComm3{*this, "MSComm3", Clase::canal, {}};
    Control MSComm4{*this, "MSComm4", Clase::canal, {}};
    Control MSComm5{*this, "MSComm5", Clase::canal, {}};
    Control MSComm6{*this, "MSComm6", Clase::canal, {}};
    Control Timer1{*this, "Timer1", Clase::temporizador, {.interval = 998}};
    Control Timer2{*this, "Timer2", Clase::temporizador, {.interval = 20}};
    Control Timer3{*this, "Timer3", Clase::temporizador, {.enabled = false}};
    Control Timer4{*this, "Timer4", Clase::temporizador, {.interval = 1000}};

    // Labels
    Control Label1{*this, "Label1", Clase::rotulo, {.caption = "Nro de Serie"}};
    Control Label2{*this, "Label2", Clase::rotulo, {.caption = "Usuario"}};
    Control Label6{*this, "Label6", Clase::rotulo, {.caption = "Ubicacion"}};
    Control Label7{*this, "Label7", Clase::rotulo, {.caption = "Latitud"}};
    Control Label13{*this, "Label13", Clase::rotulo, {.caption = "Longitud"}};
    Control Label8{*this, "Label8", Clase::rotulo, {.caption = "Altitud"}};
    Control Label5{*this, "Label5", Clase::rotulo, {.caption = "Intervalo de Muestreo"}};
    Control Label3{*this, "Label3", Clase::rotulo, {.caption = "Ajustar a fecha y hora de PC"}};
    Control Label11{*this, "Label11", Clase::rotulo, {.caption = "Configuracion"}};
    Control Label9{*this, "Label9", Clase::rotulo, {.caption = "Registro De Datos"}};
    Control Label10{*this, "Label10", Clase::rotulo, {.caption = "Medicion de Datos en linea"}};
    Control Label14{*this, "Label14", Clase::rotulo, {.caption = "Estacion Meteorologica Automatica"}};
    Control Label16{*this, "Label16", Clase::rotulo, {.caption = "NimbaRIS"}};
    Control Label15{
        *this, "Label15", Clase::rotulo, {.caption = "VELTRA Instrumentos · www.veltra.example · Mendoza"}};
    Control Label4{*this, "Label4", Clase::rotulo, {}};
    Control Label12{*this, "Label12", Clase::rotulo, {}};

    // Decoration
    Control Line1{*this, "Line1", Clase::linea, {}};
    Control Line2{*this, "Line2", Clase::linea, {}};
    Control Line3{*this, "Line3", Clase::linea, {}};
    Control Line4{*this, "Line4", Clase::linea, {}};
    Control Line5{*this, "Line5", Clase::linea, {}};

    // The five texts of the configuration that the user may edit, in the order of the record.
    std::array<Control*, 5> camposTexto() { return {&Text2, &Text3, &Text4, &Text5, &Text7}; }
    // Those that can be written in edit mode only: the texts, the date and the time.
    std::array<Control*, 7> camposEdicion() {
        return {&Text2, &Text3, &Text4, &Text5, &Text7, &fecha1, &MaskEdBox2};
    }
    // The sampling interval options, 1 to 60 minutes.
    std::array<Control*, 6> opciones() {
        return {&Option1, &Option2, &Option3, &Option4, &Option5, &Option6};
    }
};

}  // namespace telvane
