// Read-only text of many lines. Nothing is laid out but the lines on view, so a text of a year's samples is
// shown at once and costs an offset per line.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include <QAbstractScrollArea>
#include <QString>

class QTimer;

namespace telvane {

class VistaLineas : public QAbstractScrollArea {
   public:
    // filas: height of the size hint, in lines.
    explicit VistaLineas(QWidget* padre, int filas = 4);

    // Shows plain UTF-8 text, lines ended by CR LF, LF or CR. The caller keeps it alive until the next call.
    void texto(std::string_view utf8);
    int lineas() const { return static_cast<int>(inicios_.size()); }
    QString linea(int indice) const;
    // Everything, lines ended by LF.
    QString todo() const;

    // Keeps the last line on view whenever the text changes.
    void seguirElFinal(bool si) { seguirElFinal_ = si; }
    // Lines begin at the very edge, in line with what stands above and below.
    void sinSangria();
    // Whether whole lines can be selected and copied; they can unless told otherwise.
    void seleccionable(bool si);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

   protected:
    void paintEvent(QPaintEvent* suceso) override;
    void resizeEvent(QResizeEvent* suceso) override;
    void changeEvent(QEvent* suceso) override;
    void keyPressEvent(QKeyEvent* suceso) override;
    void mousePressEvent(QMouseEvent* suceso) override;
    void mouseMoveEvent(QMouseEvent* suceso) override;
    void contextMenuEvent(QContextMenuEvent* suceso) override;
    void scrollContentsBy(int dx, int dy) override;

   private:
    struct Tramo {
        int primera = 0;
        int ultima = -1;
    };

    void indexar();
    void medir();
    void ajustarBarras();
    void anunciar();
    void anunciarCambio();
    int alto() const;
    int filasEnteras() const;
    int lineaEn(int y) const;
    Tramo seleccion() const;
    void seleccionar(int ancla, int actual);
    void copiar() const;
    std::string_view bytesDeLinea(int indice) const;

    std::string_view texto_;
    std::vector<std::uint32_t> inicios_;  // byte offset of each line
    int filas_;
    int ancho_ = 0;  // widest line, pixels
    int sangria_;    // pixels before and after a line
    int ancla_ = -1;
    int actual_ = -1;
    QTimer* anuncio_;    // a reader is told of a text that keeps changing once a second
    QString anunciado_;  // what it was told last
    bool seguirElFinal_ = false;
    bool seleccionable_ = true;
};

}  // namespace telvane
