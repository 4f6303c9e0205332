// The main window's frame, heard also while a box stands before the window.
#pragma once

#include <QAbstractNativeEventFilter>

class QWidget;

namespace telvane {

// The toolkit drops the close of a window that something modal blocks, although the frame offers it all the
// time. Under X11 the window manager's message is taken before it gets there. Wayland tells the toolkit
// alone: there a box is to be answered first.
class CierreDelMarco final : public QAbstractNativeEventFilter {
   public:
    // The window outlives this, and the application object both.
    explicit CierreDelMarco(QWidget& ventana);

    bool nativeEventFilter(const QByteArray& clase, void* suceso, qintptr* resultado) override;

   private:
    QWidget& ventana_;
};

}  // namespace telvane
