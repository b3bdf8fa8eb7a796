#include "capture/frmCapture.h"
#include "cdexport/frmCapCDAdd.h"
#include "cdexport/frmCapCDWrite.h"
#include "contracts/cd.h"
#include "devicesettings/frmCapSet.h"
#include "editor/frmImgEdit.h"
#include "findings/frmCapSogyon.h"
#include "findings/frmSoFind.h"
#include "platform/desktop/prepare_application.h"
#include "platform/desktop/screen_scale.h"
#include "screenparts/NoticeStrip.h"
#include "support/StationInABox.h"
#include "viewing/CapShow.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include <algorithm>
#include <cmath>
#include <map>

using namespace Qt::StringLiterals;

namespace {

/// WCAG 2's least contrasts of a text, and of the edge of a control.
constexpr double TextContrast = 4.5;
constexpr double PartContrast = 3.0;

double Luminance(QRgb colour)
{
    const auto linear = [](int value) {
        const double share = value / 255.0;
        return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

double Contrast(QRgb one, QRgb other)
{
    const double first = Luminance(one);
    const double second = Luminance(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

/// The ground of a picture, and what stands out most from it.
double LargestContrast(const QImage& picture)
{
    std::map<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            ++counts[picture.pixel(x, y)];
    }
    const QRgb ground = std::ranges::max_element(counts, {}, [](const auto& colour) { return colour.second; })->first;
    double largest = 1;
    for (const auto& [colour, count] : counts)
        largest = std::max(largest, Contrast(colour, ground));
    return largest;
}

bool ShowsText(const QWidget& widget)
{
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        return !label->text().trimmed().isEmpty();
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
        return !button->text().isEmpty();
    const auto* line = qobject_cast<const QLineEdit*>(&widget);
    return line != nullptr && !line->text().isEmpty();
}

bool HasEdge(const QWidget& widget)
{
    const auto* line = qobject_cast<const QLineEdit*>(&widget);
    return qobject_cast<const QComboBox*>(&widget) != nullptr ||
           (line != nullptr && qobject_cast<const QComboBox*>(line->parent()) == nullptr);
}

QString NameOf(QWidget& widget)
{
    return u"%1 \"%2\""_s.arg(QString::fromLatin1(widget.metaObject()->className()), widget.objectName());
}

class CdDrive final : public FileSystemObject
{
public:
    QList<DriveEntry> Drives() const override { return {DriveEntry{DriveTypeCd, u"/dev/sr0"_s}}; }
};

class Burner final : public XPBurn
{
public:
    QString burnArea() override { return ClientSetup.CaptureRoot; }
    bool Equipped() override { return true; }
    bool isburning() const override { return false; }
    void Startburn() override {}
};

template <class T>
StationForm& Opened()
{
    T& form = Form<T>();
    form.Show();
    return form;
}

} // namespace

class FormsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { PrepareApplication(); }

    void init()
    {
        m_box = std::make_unique<StationInABox>();
        m_box->AddPicture(u"20250301"_s, u"위내시경"_s, 1, u"조직검사"_s);
        RegisterComponent<FileSystemObject>(u"Scripting.FileSystemObject"_s,
                                            [] { return std::make_unique<CdDrive>(); });
        RegisterComponent<XPBurn>(u"BaydenBurn.XPBurn"_s, [] { return std::make_unique<Burner>(); });
    }

    void cleanup()
    {
        UnloadForms();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_box.reset();
    }

    void CanBeReadAndHeard_data()
    {
        QTest::addColumn<std::function<void(const Check&)>>("show");
        const auto row = [](const char* name, const std::function<StationForm&()>& open) {
            QTest::newRow(name) << std::function<void(const Check&)>([open](const Check& check) { check(open()); });
        };
        row("frmCapture", Opened<frmCapture>);
        row("CapShow", Opened<CapShow>);
        row("frmImgEdit", Opened<frmImgEdit>);
        row("frmCapSogyon", Opened<frmCapSogyon>);
        row("frmSoFind", Opened<frmSoFind>);
        row("frmCapCDWrite", Opened<frmCapCDWrite>);
        row("frmCapCDAdd", Opened<frmCapCDAdd>);
        QTest::newRow("frmCapSet") << std::function<void(const Check&)>([](const Check& check) {
            FakeVideoCap video;
            QTimer::singleShot(0, &video, [&] {
                StationForm* form = FindForm(u"frmCapSet"_s);
                check(*form);
                form->Unload();
            });
            ShowDeviceSettings(video);
        });
    }

    /// By one who sees little, or nothing.
    void CanBeReadAndHeard()
    {
        QFETCH(std::function<void(const Check&)>, show);
        QStringList faults{u"not shown"_s};
        show([&](StationForm& form) { faults = FaultsOf(form); });
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u'\n')));
    }

    void TheAlarmOfADateStandsOut()
    {
        VisitContext.YmdIsValid = false;
        frmCapture& screen = Form<frmCapture>();
        screen.Show();
        auto* strip = screen.findChild<NoticeStrip*>();
        const auto text = [strip] { return strip->grab(strip->findChild<QLabel*>()->geometry()).toImage(); };
        const QColor ground = text().pixelColor(0, 0);
        QVERIFY2(ground.red() > 120 && ground.green() < 60 && ground.blue() < 60, qPrintable(ground.name()));
        QVERIFY(LargestContrast(text()) >= TextContrast);
        strip->Flash();
        QVERIFY(text().pixelColor(0, 0) != ground && LargestContrast(text()) >= TextContrast);
    }

    void APanelAndACellSayWhatTheyAre()
    {
        m_box->AddPicture(QString::fromUtf16(StationInABox::Today), u"위내시경"_s, 1);
        frmCapture& screen = Form<frmCapture>();
        screen.Show();
        screen.ShowStored();
        QWidget* panel = screen.findChild<QWidget*>(u"panel(3)"_s);
        QVERIFY(panel != nullptr);
        QCOMPARE(QAccessible::queryAccessibleInterface(panel)->text(QAccessible::Name), u"수진자명: 홍길동"_s);
        QAccessibleInterface* table =
            QAccessible::queryAccessibleInterface(screen.sprCap(1).findChild<QAbstractScrollArea*>());
        QCOMPARE(table->tableInterface()->cellAt(0, 0)->text(QAccessible::Name), u"그림 001"_s);
        QAccessibleInterface* section = QAccessible::queryAccessibleInterface(&screen.cmbEtc());
        const auto labels = section->relations(QAccessible::Label);
        QVERIFY(!labels.isEmpty() && labels.first().first->text(QAccessible::Name) == u"장치종류"_s);
    }

private:
    using Check = std::function<void(StationForm&)>;

    static QStringList FaultsOf(StationForm& form)
    {
        QStringList faults;
        if (form.width() > LargestForm.width() || form.height() > LargestForm.height())
            faults << u"larger than the scale of the screen allows for"_s;
        QAccessibleInterface* window = QAccessible::queryAccessibleInterface(&form);
        if (window->role() != (form.isModal() ? QAccessible::Dialog : QAccessible::Window) ||
            window->text(QAccessible::Name) != form.windowTitle())
            faults << u"no window to a screen reader: role %1, \"%2\""_s.arg(int(window->role()))
                          .arg(window->text(QAccessible::Name));
        const QImage picture = form.grab().toImage();
        for (QWidget* widget : form.findChildren<QWidget*>()) {
            const QRect place(widget->mapTo(&form, QPoint()), widget->size());
            if (!widget->isVisibleTo(&form) || widget->objectName().startsWith(u"qt_"_s) ||
                !form.rect().contains(place))
                continue;
            if (ShowsText(*widget)) {
                const double contrast = LargestContrast(widget->grab().toImage());
                if (contrast < TextContrast)
                    faults << u"%1: text %2"_s.arg(NameOf(*widget)).arg(contrast, 0, 'f', 2);
            }
            if (HasEdge(*widget)) {
                const QPoint edge(place.left(), place.center().y());
                const double contrast = Contrast(picture.pixel(edge), picture.pixel(qMax(0, edge.x() - 1), edge.y()));
                if (contrast < PartContrast)
                    faults << u"%1: edge %2"_s.arg(NameOf(*widget)).arg(contrast, 0, 'f', 2);
            }
            const bool isUsed = widget->focusPolicy() != Qt::NoFocus || ShowsText(*widget);
            QAccessibleInterface* heard = QAccessible::queryAccessibleInterface(widget);
            if (isUsed && IsNamedBySelf(*widget) && heard->text(QAccessible::Name).trimmed().isEmpty())
                faults << NameOf(*widget) + u": no name"_s;
        }
        return faults;
    }

    /// The inner parts of a list or a table are named by what they are in.
    static bool IsNamedBySelf(const QWidget& widget)
    {
        return qobject_cast<const QComboBox*>(widget.parent()) == nullptr &&
               qobject_cast<const QAbstractScrollArea*>(widget.parent()) == nullptr;
    }

    std::unique_ptr<StationInABox> m_box;
};

QTEST_MAIN(FormsTest)
#include "FormsTest.moc"
