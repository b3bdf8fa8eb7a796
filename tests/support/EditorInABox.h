#pragma once

#include "editor/frmImgEdit.h"
#include "support/StationInABox.h"

/// The editor in a station of its own, and the operator's hand on it.
class EditorInABox : public StationInABox
{
public:
    using StationInABox::StationInABox;

    /// The editor on a picture of that size, shown and read.
    frmImgEdit& Open(QSize size)
    {
        AddPicture(QStringLiteral("20250301"), QStringLiteral("위내시경"), 1);
        const QString path = PicturePath(QStringLiteral("20250301"), QStringLiteral("위내시경"), 1);
        WriteWholeFile(path, StationInABox::Jpeg(size, Qt::darkBlue));
        frmImgEdit& editor = frmImgEdit::Open(path);
        saves = 0;
        QObject::connect(&editor, &frmImgEdit::Saved, &editor, [this] { ++saves; });
        editor.Show();
        editor.activateWindow();
        if (!QTest::qWaitFor([&] { return !editor.Canvas().imgMain().Picture().isNull() && editor.isActiveWindow(); }))
            qFatal("the editor didn't open");
        return editor;
    }

    /// Runs while the editor that a command opens is there, once its picture has been read.
    void OnceOpen(const std::function<void(frmImgEdit&)>& handler)
    {
        auto* timer = new QTimer(qApp);
        QObject::connect(timer, &QTimer::timeout, timer, [timer, handler] {
            auto* editor = static_cast<frmImgEdit*>(FindForm(QStringLiteral("frmImgEdit")));
            if (editor == nullptr || editor->Canvas().imgMain().Picture().isNull())
                return;
            timer->deleteLater();
            timer->stop();
            handler(*editor);
        });
        timer->start(1);
    }

    /// How often the editor that was opened last has written its file.
    int saves = 0;

    static QWidget& Editor() { return *FindForm(QStringLiteral("frmImgEdit")); }
    static QToolButton& Button(const QString& name) { return *Editor().findChild<QToolButton*>(name); }
    static void Tool(int tool) { Click(QStringLiteral("cmdDMode(%1)").arg(tool)); }

    static void Click(const QString& name, const std::function<void(QWidget*)>& inDialog = {})
    {
        if (inDialog) {
            auto* timer = new QTimer(qApp);
            QObject::connect(timer, &QTimer::timeout, timer, [timer, inDialog] {
                if (QWidget* dialog = QApplication::activeModalWidget()) {
                    timer->stop();
                    timer->deleteLater();
                    inDialog(dialog);
                }
            });
            timer->start(1);
        }
        QTest::mouseClick(&Button(name), Qt::LeftButton);
    }

    static void Drag(QPoint from, QPoint to, QPoint by = {})
    {
        QWidget* canvas = Editor().findChild<QWidget*>(QStringLiteral("imgMain"));
        const auto send = [&](QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButtons held) {
            QMouseEvent event(type, at, canvas->mapToGlobal(at), button, held, Qt::NoModifier);
            QCoreApplication::sendEvent(canvas, &event);
        };
        send(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
        if (!by.isNull())
            send(QEvent::MouseMove, by, Qt::NoButton, Qt::LeftButton);
        send(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton);
        send(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
    }
};

inline bool IsYellow(const QImage& picture, QPoint at)
{
    const QColor colour = picture.pixelColor(at);
    return colour.red() > 150 && colour.green() > 120;
}

/// Pixels that the operator sees as marked.
inline QRect Marked(const QImage& picture)
{
    QRect marked;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (qGreen(picture.pixel(x, y)) > 100)
                marked |= QRect(x, y, 1, 1);
        }
    }
    return marked;
}
