#include "platform/desktop/look.h"

#include "frame/colours.h"

#include <QApplication>
#include <QFile>
#include <QPalette>
#include <QProxyStyle>

#include <array>

using namespace Qt::StringLiterals;

namespace {
struct NamedColour
{
    QLatin1StringView name; ///< As the style sheet writes it, behind an @.
    QRgb colour;
};

enum ColourName {
    Window,
    Base,
    Line,
    Raised,
    Border,
    Text,
    Faint,
    Chosen,
    ChosenText,
    Accent,
    Tint,
    TintText,
    Alarm,
    AlarmText,
    Grip
};

// Every text stands at 4.5:1 or better on the ground that it is used on, every line and edge at 3:1.
constexpr std::array<NamedColour, 15> Colours{{
    {"window"_L1, 0xFF23292F},
    {"base"_L1, 0xFF191E23},
    {"line"_L1, 0xFF5F6D78},
    {"raised"_L1, 0xFF333C44},
    {"border"_L1, 0xFF7A8996},
    {"text"_L1, 0xFFE6EBEF},
    {"faint"_L1, 0xFF9EABB6},
    {"chosen"_L1, 0xFF297A8C},
    {"chosentext"_L1, 0xFFFFFFFF},
    {"accent"_L1, AccentColour},
    {"tint"_L1, NoticeColour},
    {"tinttext"_L1, NoticeTextColour},
    {"alarm"_L1, 0xFFA61B1B},
    {"alarmtext"_L1, 0xFFFFFFFF},
    {"grip"_L1, 0xFF7A8996},
}};

/// The toolkit's own, without its pictures on the buttons of dialogs: the station's buttons have none. The mark of a
/// command bar that has no room for all of its buttons is the station's: for the toolkit's, which no bar may ever show,
/// each would have the readers of all picture formats loaded before the first window is seen.
class StationStyle : public QProxyStyle
{
public:
    StationStyle() : QProxyStyle(u"Fusion"_s) {}

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override
    {
        return hint == SH_DialogButtonBox_ButtonsHaveIcons ? 0 : QProxyStyle::styleHint(hint, option, widget, returned);
    }

    QIcon standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const override
    {
        if (which == SP_ToolBarHorizontalExtensionButton)
            return QIcon(u":/station/pictures/more.svg"_s);
        return QProxyStyle::standardIcon(which, option, widget);
    }
};

QColor Colour(ColourName name)
{
    return QColor(Colours[name].colour);
}

QPalette StationPalette()
{
    QPalette palette(Colour(Raised), Colour(Window));
    palette.setColor(QPalette::Base, Colour(Base));
    palette.setColor(QPalette::AlternateBase, Colour(Window));
    palette.setColor(QPalette::WindowText, Colour(Text));
    palette.setColor(QPalette::Text, Colour(Text));
    palette.setColor(QPalette::ButtonText, Colour(Text));
    palette.setColor(QPalette::BrightText, Colour(TintText));
    palette.setColor(QPalette::PlaceholderText, Colour(Faint));
    palette.setColor(QPalette::Highlight, Colour(Chosen));
    palette.setColor(QPalette::HighlightedText, Colour(ChosenText));
    palette.setColor(QPalette::ToolTipBase, Colour(Raised));
    palette.setColor(QPalette::ToolTipText, Colour(Text));
    palette.setColor(QPalette::Link, Colour(Accent));
    palette.setColor(QPalette::LinkVisited, Colour(Accent));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, Colour(Faint));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, Colour(Raised));
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, Colour(Faint));
    return palette;
}

QString StyleSheet()
{
    QFile file(u":/station/look.qss"_s);
    const bool opened = file.open(QIODevice::ReadOnly);
    Q_ASSERT(opened);
    Q_UNUSED(opened);
    QString sheet = QString::fromUtf8(file.readAll());
    for (const NamedColour& named : Colours)
        sheet.replace(u"@%1;"_s.arg(named.name), QColor(named.colour).name() + u';');
    return sheet;
}
} // namespace

// A resource of a static library is named from outside of any namespace.
static void InitResource()
{
    Q_INIT_RESOURCE(station_look);
}

void LoadLookResources()
{
    static const bool loaded = (InitResource(), true);
    Q_UNUSED(loaded);
}

void ApplyLook(QApplication& application)
{
    constexpr char Applied[] = "stationLook";
    if (application.property(Applied).toBool())
        return;
    application.setProperty(Applied, true);
    LoadLookResources();
    QApplication::setStyle(new StationStyle);
    QApplication::setPalette(StationPalette());
    application.setStyleSheet(StyleSheet());
}
