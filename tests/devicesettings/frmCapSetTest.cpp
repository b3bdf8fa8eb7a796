#include "capture/frmCapture.h"
#include "support/StationInABox.h"
#include "visit/device_settings.h"

#include <QComboBox>
#include <QFile>
#include <QPushButton>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

/// The screen as the operator reaches it: through the menu of the capture screen.
class frmCapSetTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<StationInABox>();
        m_screen = &Form<frmCapture>();
        m_screen->Show();
        FakeVideoCap::Last()->devices = {u"내시경"_s, u"웹캠"_s};
    }
    void cleanup() { m_box.reset(); }

    void StoredPositionsAreSelected_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("device");
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("source");
        QTest::addColumn<QByteArray>("saved");
        const auto saved = [](int device, int size, int source) {
            return u"Devices=%1 Sizes=%2 Colors=0 sources=%3"_s.arg(device).arg(size).arg(source).toLatin1();
        };
        QTest::newRow("no file") << QByteArray() << 0 << 0 << 0 << saved(0, 0, 0);
        QTest::newRow("second device") << QByteArray("Devices=1\nColors=7\n") << 1 << 0 << 0 << saved(1, 0, 0);
        QTest::newRow("beyond the lists")
            << QByteArray("Devices=2\nSizes=5\nSources=-1\n") << -1 << -1 << -1 << saved(0, 0, 0);
    }

    void StoredPositionsAreSelected()
    {
        QFETCH(QByteArray, file);
        QFETCH(int, device);
        QFETCH(int, size);
        QFETCH(int, source);
        QFETCH(QByteArray, saved);
        Store(file);
        InDialog([&](QWidget& dialog) {
            auto& devices = *dialog.findChild<QComboBox*>(u"cmbDevices"_s);
            QCOMPARE(devices.itemText(0), u"00 내시경"_s);
            QCOMPARE(devices.itemText(1), u"01 웹캠"_s);
            QCOMPARE(devices.currentIndex(), device);
            QCOMPARE(dialog.findChild<QComboBox*>(u"cmbSizes"_s)->currentIndex(), size);
            QCOMPARE(dialog.findChild<QComboBox*>(u"cmbSources"_s)->currentIndex(), source);
            QCOMPARE(dialog.findChild<QComboBox*>(u"cmbColors"_s)->count(), 0);
            dialog.findChild<QPushButton*>(u"cmdSet"_s)->click();
        });
        QFile settings(SettingsFile());
        QVERIFY(settings.open(QIODevice::ReadOnly));
        const QByteArray content = settings.readAll();
        for (const QByteArray& key : saved.split(' '))
            QVERIFY2(content.toLower().contains(key.toLower()), content.constData());
        QCOMPARE(FakeVideoCap::Last()->calls.last(), u"Start"_s);
        QVERIFY(FakeVideoCap::Last()->calls.contains(u"Device %1"_s.arg(qMax(0, device))));
    }

    void CancelSavesNothingAndStartsTheDevice()
    {
        const QByteArray file = "Devices=1\nSizes=4\n";
        Store(file);
        InDialog([](QWidget& dialog) {
            dialog.findChild<QComboBox*>(u"cmbDevices"_s)->setCurrentIndex(0);
            dialog.findChild<QPushButton*>(u"cmdCancel"_s)->click();
        });
        QCOMPARE(DeviceSettings.Devices, 1);
        QVERIFY(Stored().endsWith(file));
        // The format that the list doesn't have is left out once, and then applied by the start.
        const QStringList calls = {u"Device 1"_s,      u"VideoInput 0"_s, u"Device 1"_s,
                                   u"VideoFormat 4"_s, u"VideoInput 0"_s, u"Start"_s};
        QCOMPARE(FakeVideoCap::Last()->calls, calls);
    }

    void NoDevice()
    {
        FakeVideoCap::Last()->devices.clear();
        Choose();
        const QStringList texts = {u"캡쳐장치를 찾을수 없습니다.!!"_s, u"캡쳐 장치를 찾을수 없습니다.!!"_s};
        QCOMPARE(m_box->Desk().shown, texts);
        QVERIFY(!m_screen->IsUnloaded());
        QVERIFY(FindForm(u"frmCapSet"_s) == nullptr);
    }

private:
    void Choose() { m_screen->findChild<QAction*>(u"장치설정"_s)->trigger(); }

    /// Opens the screen and does that in it.
    void InDialog(const std::function<void(QWidget&)>& work)
    {
        bool done = false;
        QTimer::singleShot(0, this, [&] {
            StationForm* dialog = FindForm(u"frmCapSet"_s);
            QVERIFY(dialog != nullptr);
            work(*dialog);
            if (!dialog->IsUnloaded())
                dialog->Unload();
            done = true;
        });
        Choose();
        QVERIFY(done);
    }

    QString SettingsFile() const { return m_box->Desk().ProgramFolder() + u"/CapSet.ini"_s; }
    void Store(const QByteArray& keys)
    {
        QFile file(SettingsFile());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Capture Setting]\n" + keys);
    }
    QByteArray Stored() const
    {
        QFile file(SettingsFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<StationInABox> m_box;
    frmCapture* m_screen = nullptr;
};

QTEST_MAIN(frmCapSetTest)
#include "frmCapSetTest.moc"
