#include "contracts/ImageList.h"
#include "contracts/setup_components.h"
#include "contracts/StatusPanels.h"
#include "frame/components.h"
#include "frame/plain_text.h"
#include "platform/desktop/prepare_application.h"
#include "platform/desktop/register_desktop.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDateEdit>
#include <QFontInfo>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTabBar>
#include <QTest>
#include <QToolTip>
#include <QWheelEvent>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {
double Luminance(const QColor& colour)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

double Contrast(const QColor& one, const QColor& other)
{
    const auto [dark, light] = std::minmax({Luminance(one), Luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

/// The two farthest colours in a picture of a widget: its text and its ground.
double ContrastWithin(QWidget& widget)
{
    const QImage picture = widget.grab().toImage();
    const QColor ground = picture.pixelColor(3, picture.height() / 2);
    double best = 1;
    for (int y = 2; y < picture.height() - 2; ++y) {
        for (int x = 2; x < picture.width() - 2; ++x)
            best = std::max(best, Contrast(ground, picture.pixelColor(x, y)));
    }
    return best;
}
} // namespace

class LookTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        RegisterDesktop({});
        PrepareApplication();
    }

    void WindowsFontsHaveKoreanLetters_data();
    void WindowsFontsHaveKoreanLetters();
    void TextsStandOut_data();
    void TextsStandOut();
    void HistoryNoteIsTinted();
    void TheWheelChoosesNothing();
    void PanelsKeepAndShorten();
    void PanelRemark();
    void EveryKeyHasItsPicture();
};

void LookTest::WindowsFontsHaveKoreanLetters_data()
{
    QTest::addColumn<QString>("family");
    QTest::addColumn<QString>("found");
    QTest::newRow("dotum") << u"돋움"_s << u"UnDotum"_s;
    QTest::newRow("gulim") << u"굴림"_s << u"UnDotum"_s;
    QTest::newRow("batang") << u"바탕"_s << u"UnBatang"_s;
    QTest::newRow("dotumche") << u"돋움체"_s << u"NanumGothicCoding"_s;
}

void LookTest::WindowsFontsHaveKoreanLetters()
{
    QFETCH(QString, family);
    QTEST(QFontInfo(QFont(family, 9)).family(), "found");
    QVERIFY(QFontMetrics(QFont(family, 9)).inFont(u'쳐'));
}

void LookTest::TextsStandOut_data()
{
    using Group = QPalette::ColorGroup;
    using Role = QPalette::ColorRole;
    QTest::addColumn<Group>("group");
    QTest::addColumn<Role>("text");
    QTest::addColumn<Role>("ground");
    for (const Group group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        const auto row = [&](const char* name, Role text, Role ground) {
            QTest::addRow("%s, group %d", name, int(group)) << group << text << ground;
        };
        row("label", QPalette::WindowText, QPalette::Window);
        row("box", QPalette::Text, QPalette::Base);
        row("other line", QPalette::Text, QPalette::AlternateBase);
        row("button", QPalette::ButtonText, QPalette::Button);
        row("selection", QPalette::HighlightedText, QPalette::Highlight);
        row("tooltip", QPalette::ToolTipText, QPalette::ToolTipBase);
        row("placeholder", QPalette::PlaceholderText, QPalette::Base);
    }
}

void LookTest::TextsStandOut()
{
    QFETCH(QPalette::ColorGroup, group);
    QFETCH(QPalette::ColorRole, text);
    QFETCH(QPalette::ColorRole, ground);
    const QPalette palette = QApplication::palette();
    const double contrast = Contrast(palette.color(group, text), palette.color(group, ground));
    QVERIFY2(contrast >= 4.5, qPrintable(QString::number(contrast)));
}

void LookTest::HistoryNoteIsTinted()
{
    QWidget form;
    ConnectionPointer none;
    CreateObject<clsThemeShell>(u"prjThemeShell.clsThemeShell"_s)->skinchang(form, 0, none);
    const auto ground = [&](bool historyNote) {
        QPlainTextEdit box(&form);
        box.setProperty("historyNote", historyNote);
        box.setReadOnly(historyNote);
        box.setPlainText(u"용종 2개"_s);
        box.resize(200, 26);
        if (ContrastWithin(box) < 4.5)
            QTest::qFail("faint text", __FILE__, __LINE__);
        return box.grab().toImage().pixelColor(150, 20);
    };
    QVERIFY(ground(true) != ground(false));
}

void LookTest::TheWheelChoosesNothing()
{
    const auto notch = [](QWidget& under) {
        const QPointF place = under.rect().center();
        QWheelEvent event(place, under.mapToGlobal(place), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&event);
        qApp->notify(&under, &event);
    };
    QWidget form;
    QLineEdit text(&form);
    QComboBox list(&form);
    QComboBox editable(&form);
    editable.setEditable(true);
    QDateEdit date(QDate(2026, 11, 24), &form);
    QSlider slider(&form);
    slider.setValue(9);
    QTabBar tabs(&form);
    for (int entry = 0; entry < 40; ++entry) {
        list.addItem(QString::number(entry));
        editable.addItem(QString::number(entry));
        tabs.addTab(QString::number(entry));
    }
    form.show();
    text.setFocus();
    QVERIFY(QTest::qWaitForWindowActive(&form));
    for (QWidget* under : {static_cast<QWidget*>(&list), static_cast<QWidget*>(editable.lineEdit()),
                           date.findChild<QWidget*>(), static_cast<QWidget*>(&slider), static_cast<QWidget*>(&tabs)})
        notch(*under);
    QCOMPARE(list.currentIndex() + editable.currentIndex() + slider.value() + tabs.currentIndex(), 9);
    QCOMPARE(date.date(), QDate(2026, 11, 24));
    QVERIFY(text.hasFocus());

    list.showPopup();
    notch(*list.view()->viewport());
    QVERIFY(list.view()->verticalScrollBar()->value() > 0);
    QCOMPARE(list.currentIndex(), 0);
}

void LookTest::PanelsKeepAndShorten()
{
    const auto bar = CreateObject<StatusPanels>(u"MSComctlLib.StatusBar"_s);
    bar->setPanelCount(8);
    bar->resize(1016, 18);
    const QStringList texts{u"00012345"_s,       u"01"_s,
                            u"홍길동"_s,         u"M"_s,
                            u"63세"_s,           u"010-1234-5678"_s,
                            u"600101-1234567"_s, u"서울특별시 종로구 세종대로 "_s.repeated(8)};
    for (int panel = 1; panel <= 8; ++panel)
        bar->setText(panel, texts[panel - 1]);
    bar->show();
    QVERIFY(QTest::qWaitForWindowExposed(bar.get()));

    const auto labels = bar->findChildren<QLabel*>();
    QCOMPARE(labels.size(), 8);
    for (int panel = 1; panel <= 8; ++panel) {
        QCOMPARE(bar->Text(panel), texts[panel - 1]);
        const QLabel& label = *labels[panel - 1];
        QCOMPARE(label.height(), 18);
        const QString shown = label.fontMetrics().elidedText(texts[panel - 1], Qt::ElideRight, label.width() - 12);
        QCOMPARE(shown == texts[panel - 1], panel < 8);
    }
    QCOMPARE(labels.last()->geometry().right(), 1015);

    QHelpEvent hover(QEvent::ToolTip, {5, 5}, labels.last()->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(labels.last(), &hover);
    QCOMPARE(QToolTip::text(), ToolTipText(texts.last()));
    QCOMPARE(bar->Text(9), QString());
    bar->setText(9, u"x"_s);
    bar->setRemark(0, u"x"_s);
}

void LookTest::PanelRemark()
{
    const auto bar = CreateObject<StatusPanels>(u"MSComctlLib.StatusBar"_s);
    bar->resize(1016, 18);
    bar->setText(3, u"홍길동"_s);
    bar->show();
    QVERIFY(QTest::qWaitForWindowExposed(bar.get()));
    QLabel& name = *bar->findChildren<QLabel*>()[2];
    const QImage plain = name.grab().toImage();

    bar->setRemark(3, u"유형이 없습니다. 확인하세요."_s);
    QVERIFY(name.grab().toImage().pixel(2, 9) != plain.pixel(2, 9));
    QVERIFY(ContrastWithin(name) >= 4.5);
    QCOMPARE(name.accessibleDescription(), u"유형이 없습니다. 확인하세요."_s);
    QHelpEvent hover(QEvent::ToolTip, {5, 5}, name.mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&name, &hover);
    QCOMPARE(QToolTip::text(), ToolTipText(u"유형이 없습니다. 확인하세요."_s));

    bar->setRemark(3, {});
    QCOMPARE(name.grab().toImage(), plain);
}

void LookTest::EveryKeyHasItsPicture()
{
    ImageList& pictures = UseService<ImageList>();
    const QStringList keys{u"Pen"_s,     u"Question"_s, u"Exit"_s,  u"Movie"_s,  u"Happy"_s,
                           u"Naraeon"_s, u"Tool"_s,     u"Print"_s, u"Save"_s,   u"Save2"_s,
                           u"Connect"_s, u"Clear"_s,    u"ICon1"_s, u"Delete"_s, u"Find"_s};
    QCOMPARE(pictures.Keys(), keys);
    QList<QImage> drawn;
    for (const QString& key : keys) {
        const QImage image = pictures.Picture(key).pixmap(QSize(20, 20)).toImage();
        QVERIFY2(!image.isNull() && image.hasAlphaChannel(), qPrintable(key));
        int strong = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                strong += qAlpha(image.pixel(x, y)) > 128 ? 1 : 0;
        }
        QVERIFY2(strong > 30, qPrintable(key));
        QVERIFY2(!drawn.contains(image), qPrintable(key));
        drawn << image;
    }
    QVERIFY(pictures.Picture(u"Nothing"_s).isNull());
}

QTEST_MAIN(LookTest)
#include "LookTest.moc"
