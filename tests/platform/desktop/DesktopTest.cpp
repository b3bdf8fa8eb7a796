#include "contracts/desktop.h"
#include "contracts/printing.h"
#include "frame/components.h"
#include "frame/services.h"
#include "platform/desktop/prepare_application.h"
#include "platform/desktop/register_desktop.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {
QMessageBox* OpenBox()
{
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

/// Runs `answer` on the message box that the next call opens, once it is on the screen.
void WhenBoxOpens(const std::function<void(QMessageBox&)>& answer)
{
    auto* timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, answer] {
        QMessageBox* box = OpenBox();
        if (box == nullptr || !box->isActiveWindow())
            return;
        timer->stop();
        timer->deleteLater();
        answer(*box);
        if (box->isVisible()) {
            QTest::qFail("the box stayed open", __FILE__, __LINE__);
            box->reject();
        }
    });
    timer->start(1);
}
} // namespace

class DesktopTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { RegisterDesktop(u"00012345 01 02"_s); }

    void QuestionMeansNoUnlessYesIsChosen_data();
    void QuestionMeansNoUnlessYesIsChosen();
    void BoxesLookAsTold();
    void MarkupIsShownAsItStands();
    void PointerIsNotCounted();
    void PointerIsNormalUnderABox();
    void PumpsUntilDone();
    void PrinterDialogCancelled();
    void PrinterDialogWithAFile();
    void ProgramFolder_data();
    void ProgramFolder();
    void ProgramEndsInThePump(); // The last: no event loop runs after it.
};

void DesktopTest::QuestionMeansNoUnlessYesIsChosen_data()
{
    QTest::addColumn<QList<Qt::Key>>("keys");
    QTest::addColumn<QString>("button"); // Clicked after the keys; "close" is the window's close box.
    QTest::addColumn<bool>("answer");

    QTest::newRow("return") << QList{Qt::Key_Return} << QString() << false;
    QTest::newRow("enter of the number pad") << QList{Qt::Key_Enter} << QString() << false;
    QTest::newRow("space") << QList{Qt::Key_Space} << QString() << false;
    QTest::newRow("escape") << QList{Qt::Key_Escape} << QString() << false;
    QTest::newRow("close box") << QList<Qt::Key>() << u"close"_s << false;
    QTest::newRow("no") << QList<Qt::Key>() << u"cmdNo"_s << false;
    QTest::newRow("yes") << QList<Qt::Key>() << u"cmdYes"_s << true;
    QTest::newRow("moved to yes by key") << QList{Qt::Key_Tab, Qt::Key_Return} << QString() << true;
    QTest::newRow("moved to yes and left") << QList{Qt::Key_Tab, Qt::Key_Escape} << QString() << false;
}

void DesktopTest::QuestionMeansNoUnlessYesIsChosen()
{
    QFETCH(QList<Qt::Key>, keys);
    QFETCH(QString, button);
    WhenBoxOpens([&](QMessageBox& box) {
        for (const Qt::Key key : keys) {
            QWidget* focus = QApplication::focusWidget();
            QTest::keyClick(focus != nullptr ? focus : &box, key);
        }
        if (button == u"close")
            box.close();
        else if (!button.isEmpty())
            QTest::mouseClick(box.findChild<QAbstractButton*>(button), Qt::LeftButton);
    });
    QTEST(AskYesNo(u"삭제하시겠습니까?"_s), "answer");
}

void DesktopTest::BoxesLookAsTold()
{
    QStringList seen;
    const auto note = [&](QMessageBox& box) {
        QStringList captions;
        for (const QAbstractButton* button : box.buttons())
            captions << button->text();
        captions.sort();
        seen = {box.windowTitle(), box.text(), captions.join(u'|')};
        seen << (box.icon() == QMessageBox::Information ? u"i"_s : box.icon() == QMessageBox::NoIcon ? u"-"_s : u"?"_s);
        box.reject();
    };
    const QString title = u"나 래 온 빛 터 (주)"_s;
    WhenBoxOpens(note);
    ShowInformation(u"캡쳐할 영상이 없습니다.!!"_s);
    QCOMPARE(seen, QStringList({title, u"캡쳐할 영상이 없습니다.!!"_s, u"확인"_s, u"i"_s}));
    WhenBoxOpens(note);
    AskYesNo(u"삭제하시겠습니까?"_s);
    QCOMPARE(seen, QStringList({title, u"삭제하시겠습니까?"_s, u"아니오|예"_s, u"-"_s}));
    WhenBoxOpens(note);
    UseService<Desktop>().ShowPlain(u"오류"_s);
    QVERIFY(seen.first() != title);
    QCOMPARE(seen.mid(1), QStringList({u"오류"_s, u"확인"_s, u"-"_s}));
}

void DesktopTest::MarkupIsShownAsItStands()
{
    QString shown;
    WhenBoxOpens([&](QMessageBox& box) {
        shown = box.textFormat() == Qt::PlainText ? box.text() : QString();
        box.reject();
    });
    ShowInformation(u"<b>a</b>\r\nb"_s);
    QCOMPARE(shown, u"<b>a</b>\r\nb"_s);
}

void DesktopTest::PointerIsNotCounted()
{
    SetMousePointer(PointerBusy);
    SetMousePointer(PointerBusy);
    QVERIFY(QApplication::overrideCursor() != nullptr);
    SetMousePointer(PointerNormal);
    QVERIFY(QApplication::overrideCursor() == nullptr);
    SetMousePointer(PointerNormal);
    QVERIFY(QApplication::overrideCursor() == nullptr);
}

void DesktopTest::PointerIsNormalUnderABox()
{
    bool busyUnderBox = true;
    const BusyPointer busy;
    WhenBoxOpens([&](QMessageBox& box) {
        busyUnderBox = QApplication::overrideCursor() != nullptr;
        box.reject();
    });
    ShowInformation(u"잠시"_s);
    QVERIFY(!busyUnderBox);
    QVERIFY(QApplication::overrideCursor() != nullptr);

    // What a handler sets meanwhile counts from the box's end on.
    WhenBoxOpens([&](QMessageBox& box) {
        SetMousePointer(PointerNormal);
        box.reject();
    });
    ShowInformation(u"잠시"_s);
    QVERIFY(QApplication::overrideCursor() == nullptr);
}

void DesktopTest::PumpsUntilDone()
{
    Desktop& desktop = UseService<Desktop>();
    bool rang = false;
    int asked = 0;
    QTimer::singleShot(80, [&] { rang = true; });
    QVERIFY(desktop.PumpEventsUntil([&] { return ++asked, rang; }, 20000));
    // It sleeps while nothing happens.
    QVERIFY2(asked < 40, qPrintable(QString::number(asked)));

    QVERIFY(!desktop.PumpEventsUntil([] { return false; }, 30));
    QVERIFY(desktop.PumpEventsUntil([] { return true; }, 0));
    QVERIFY(!desktop.PumpEventsUntil([] { return false; }, 0));
}

void DesktopTest::ProgramEndsInThePump()
{
    Desktop& desktop = UseService<Desktop>();
    QCOMPARE(desktop.Command(), u"00012345 01 02"_s);
    QVERIFY(!desktop.ProgramEnded());
    QTimer::singleShot(0, [] { EndProgram(); });
    QVERIFY(!desktop.PumpEventsUntil([] { return false; }, 60000));
    QVERIFY(desktop.ProgramEnded());
}

void DesktopTest::PrinterDialogCancelled()
{
    QTimer closer;
    bool seen = false;
    connect(&closer, &QTimer::timeout, this, [&] {
        if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
            seen = true;
            dialog->reject();
        }
    });
    closer.start(5);
    UseService<Desktop>().ShowPrinterDialog();
    QVERIFY(seen);
}

void DesktopTest::PrinterDialogWithAFile()
{
    static QStringList used;
    class KeptOptions final : public PrinterOptions
    {
        void UseFolder(const QString&) override {}
        void UsePrinter(const QString& name) override { used << u"printer "_s + name; }
        void UseFile(const QString& path) override { used << path; }
    };
    InstallService<PrinterOptions>(std::make_unique<KeptOptions>());
    const QTemporaryDir folder;
    QTimer chooser;
    connect(&chooser, &QTimer::timeout, this, [&] {
        QWidget* dialog = QApplication::activeModalWidget();
        if (dialog == nullptr)
            return;
        chooser.stop();
        auto* printers = dialog->findChild<QComboBox*>(u"printers"_s);
        printers->setCurrentIndex(printers->count() - 1);
        Q_EMIT printers->activated(printers->currentIndex());
        dialog->findChild<QLineEdit*>(u"filename"_s)->setText(folder.filePath(u"소견.pdf"_s));
        dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
    });
    chooser.start(5);
    UseService<Desktop>().ShowPrinterDialog();
    QCOMPARE(used, QStringList{folder.filePath(u"소견.pdf"_s)});
    InstallService<PrinterOptions>(nullptr);
}

void DesktopTest::ProgramFolder_data()
{
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<QString>("executableFolder");
    QTest::addColumn<QString>("expected");

    // %1 is a folder that can be written.
    QTest::newRow("chosen, made at need") << u"%1/a/b//"_s << u"%1"_s << u"%1/a/b"_s;
    QTest::newRow("beside the program") << QString() << u"%1/"_s << u"%1"_s;
    QTest::newRow("program lies where none may write") << QString() << u"/proc/1"_s << u"%1/config/capture-station"_s;
    QTest::newRow("blank choice") << u"  "_s << u"/proc/1"_s << u"%1/config/capture-station"_s;
}

void DesktopTest::ProgramFolder()
{
    QFETCH(QString, chosen);
    QFETCH(QString, executableFolder);
    QFETCH(QString, expected);
    const QTemporaryDir folder;
    const auto placed = [&](QString path) { return path.replace(u"%1"_s, folder.path()); };

    const QString found = FindProgramFolder(placed(chosen), placed(executableFolder), placed(u"%1/config"_s));
    QCOMPARE(found, placed(expected));
    QVERIFY(QDir(found).exists());
}

QTEST_MAIN(DesktopTest)
#include "DesktopTest.moc"
