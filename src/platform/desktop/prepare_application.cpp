#include "platform/desktop/prepare_application.h"

#include "frame/composition.h"
#include "platform/desktop/look.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QFont>
#include <QLibraryInfo>
#include <QLocale>
#include <QScrollBar>
#include <QTabBar>
#include <QTranslator>

using namespace Qt::StringLiterals;

namespace {

bool HoldsChoice(const QObject* widget)
{
    if (qobject_cast<const QAbstractSlider*>(widget) != nullptr)
        return qobject_cast<const QScrollBar*>(widget) == nullptr;
    return qobject_cast<const QComboBox*>(widget) != nullptr ||
           qobject_cast<const QAbstractSpinBox*>(widget) != nullptr || qobject_cast<const QTabBar*>(widget) != nullptr;
}
/// Keeps the wheel from choosing anything in the whole application: over a closed list, a tab, a slider or a box of
/// numbers or dates a notch scrolls what they lie in, if that can be scrolled; it doesn't change them, and gives them
/// no keyboard. An open list scrolls as ever.
class WheelFilter : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override;
};

bool WheelFilter::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Polish && HoldsChoice(watched)) {
        auto* widget = static_cast<QWidget*>(watched);
        // Else the keys that are meant for a text go on in the list.
        if (widget->focusPolicy() == Qt::WheelFocus)
            widget->setFocusPolicy(Qt::StrongFocus);
    }
    if (event->type() != QEvent::Wheel || !HoldsChoice(watched))
        return QObject::eventFilter(watched, event);
    event->ignore(); // What they lie in gets it.
    return true;
}

} // namespace

void PrepareApplication()
{
    // Without these a Windows name leads to a font without Korean letters.
    QFont::insertSubstitutions(u"돋움"_s, {u"UnDotum"_s, u"NanumGothic"_s});
    QFont::insertSubstitutions(u"굴림"_s, {u"UnDotum"_s, u"NanumGothic"_s});
    QFont::insertSubstitutions(u"바탕"_s, {u"UnBatang"_s, u"NanumMyeongjo"_s});
    QFont::insertSubstitutions(u"돋움체"_s, {u"NanumGothicCoding"_s, u"UnDotum"_s});
    QApplication::setFont(QFont(u"돋움"_s, 9));

    const QLocale korean(QLocale::Korean, QLocale::SouthKorea);
    QLocale::setDefault(korean);
    auto* texts = new QTranslator(qApp);
    if (texts->load(korean, u"qtbase"_s, u"_"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(texts);

    ApplyLook(*qApp);
    FollowComposition();
    qApp->installEventFilter(new WheelFilter(qApp));
}

QString FindProgramFolder(const QString& chosen, const QString& executableFolder, const QString& configFolder)
{
    QString folder = chosen.trimmed();
    if (folder.isEmpty() && QFileInfo(executableFolder).isWritable())
        folder = executableFolder;
    if (folder.isEmpty())
        folder = configFolder + u"/capture-station"_s;
    folder = QDir::cleanPath(QDir(folder).absolutePath());
    QDir().mkpath(folder);
    return folder;
}
