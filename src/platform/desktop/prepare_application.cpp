#include "platform/desktop/prepare_application.h"

#include "frame/composition.h"
#include "platform/desktop/look.h"

#include <QAbstractSpinBox>
#include <QAccessibleWidget>
#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QFont>
#include <QHash>
#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>
#include <QScrollBar>
#include <QTabBar>
#include <QTranslator>

#include <malloc.h>

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

/// A form is a window to a screen reader, a modal one a dialog, by its title. It may be asked for before it has become
/// either.
class FormAccess final : public QAccessibleWidget
{
public:
    explicit FormAccess(QWidget* form) : QAccessibleWidget(form) {}

    QAccessible::Role role() const override { return widget()->isModal() ? QAccessible::Dialog : QAccessible::Window; }
    QString text(QAccessible::Text text) const override
    {
        return text == QAccessible::Name ? widget()->windowTitle() : QAccessibleWidget::text(text);
    }
};

/// Any other widget is what the toolkit takes it for.
QAccessibleInterface* ReadableForm(const QString& className, QObject* object)
{
    if (className != u"StationForm"_s)
        return nullptr;
    return new FormAccess(static_cast<QWidget*>(object));
}

/// Texts of the toolkit's dialogs that its Korean catalogue lacks.
class UntranslatedTexts : public QTranslator
{
public:
    using QTranslator::QTranslator;

    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* source, const char*, int) const override
    {
        static const QHash<QByteArray, QString> texts{
            {"QAbstractFileIconProvider/Drive", u"드라이브"_s},  {"QAbstractFileIconProvider/File", u"파일"_s},
            {"QAbstractFileIconProvider/%1 File", u"%1 파일"_s}, {"QAbstractFileIconProvider/File Folder", u"폴더"_s},
            {"QAbstractFileIconProvider/Folder", u"폴더"_s},     {"QAbstractFileIconProvider/Shortcut", u"바로 가기"_s},
            {"QAbstractFileIconProvider/Alias", u"바로 가기"_s}, {"QAbstractFileIconProvider/Unknown", u"알 수 없음"_s},
        };
        return texts.value(QByteArray(context) + '/' + source);
    }
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

/// What is freed is given back. The C library keeps an arena for each of many threads, and in each what a live picture
/// has taken at its most: a connection that is made anew all day came to over a gigabyte.
void GiveMemoryBack()
{
    constexpr int Arenas = 2;
    constexpr int LargestKept = 4 * 1024 * 1024; // Bytes; a frame is larger, a stored picture rarely.
    mallopt(M_ARENA_MAX, Arenas);
    mallopt(M_MMAP_THRESHOLD, LargestKept);
}

} // namespace

void PrepareApplication()
{
    GiveMemoryBack();
    // Without these a Windows name leads to a font without Korean letters.
    QFont::insertSubstitutions(u"돋움"_s, {u"UnDotum"_s, u"NanumGothic"_s});
    QFont::insertSubstitutions(u"굴림"_s, {u"UnDotum"_s, u"NanumGothic"_s});
    QFont::insertSubstitutions(u"바탕"_s, {u"UnBatang"_s, u"NanumMyeongjo"_s});
    QFont::insertSubstitutions(u"돋움체"_s, {u"NanumGothicCoding"_s, u"UnDotum"_s});
    QApplication::setFont(QFont(u"돋움"_s, 9));

    const QLocale korean(QLocale::Korean, QLocale::SouthKorea);
    QLocale::setDefault(korean);
    QCoreApplication::installTranslator(new UntranslatedTexts(qApp));
    auto* texts = new QTranslator(qApp);
    if (texts->load(korean, u"qtbase"_s, u"_"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(texts);

    QAccessible::installFactory(&ReadableForm);
    ApplyLook(*qApp);
    QGuiApplication::setDesktopFileName(u"capture-station"_s);
    QApplication::setWindowIcon(QIcon(u":/station/capture-station.svg"_s));
    FollowComposition();
    qApp->installEventFilter(new WheelFilter(qApp));
}
