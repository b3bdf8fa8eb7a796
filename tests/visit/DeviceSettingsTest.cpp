#include "support/StationInABox.h"
#include "visit/device_settings.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

class DeviceSettingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void Reading_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("sizes");
        QTest::newRow("no such key") << QByteArray("[Capture Setting]\r\nDevices=1\r\n") << 0;
        QTest::newRow("plain") << QByteArray("[Capture Setting]\r\nSizes=2\r\n") << 2;
        QTest::newRow("case and blanks") << QByteArray("[capture SETTING]\nsizes =   3\n") << 3;
        QTest::newRow("letters") << QByteArray("[Capture Setting]\r\nSizes=abc\r\n") << 0;
        QTest::newRow("ten digits are cut to nine")
            << QByteArray("[Capture Setting]\r\nSizes=1234567890\r\n") << 123456789;
        QTest::newRow("Korean rubbish") << QByteArray("[Capture Setting]\r\nSizes=\xb0\xa1\xb0\xa1\r\n") << 0;
        QTest::newRow("binary rubbish") << QByteArray("\x00\xff[[=\n=\n]Capture Setting[\nSizes=4\n", 34) << 0;
    }

    void Reading()
    {
        QFETCH(QByteArray, file);
        StationInABox box;
        QFile settings(box.Desk().ProgramFolder() + u"/CapSet.ini"_s);
        QVERIFY(settings.open(QIODevice::WriteOnly));
        settings.write(file);
        settings.close();
        LoadDeviceSettings();
        QTEST(DeviceSettings.Sizes, "sizes");
    }

    void WritingReadsBack()
    {
        StationInABox box;
        DeviceSettings = {1, 2, 3, 4};
        SaveDeviceSettings();
        QFile settings(box.Desk().ProgramFolder() + u"/CapSet.ini"_s);
        QVERIFY(settings.open(QIODevice::ReadOnly));
        const QByteArray content = settings.readAll();
        QVERIFY(content.contains("sources=4"));
        QVERIFY(!content.contains("Image Edit Setting"));
        DeviceSettings = {};
        LoadDeviceSettings();
        QCOMPARE(DeviceSettings.Devices, 1);
        QCOMPARE(DeviceSettings.Sizes, 2);
        QCOMPARE(DeviceSettings.Colors, 3);
        QCOMPARE(DeviceSettings.Sources, 4);
    }
};

QTEST_MAIN(DeviceSettingsTest)
#include "DeviceSettingsTest.moc"
