// How controls are drawn.
#pragma once

#include <QProxyStyle>

namespace telvane {

// The style's frames are darker than the window. On a dark one nobody sees them: fields, boxes to tick and
// options get a frame there that stands at 3:1 or more against what is around it and in it.
class Estilo : public QProxyStyle {
    Q_OBJECT
   public:
    Estilo();

    void drawPrimitive(PrimitiveElement elemento, const QStyleOption* opcion, QPainter* pintor,
                       const QWidget* control) const override;
};

}  // namespace telvane
