#include "contracts/desktop.h"
#include "contracts/ImageList.h"
#include "contracts/printing.h"
#include "contracts/setup_components.h"
#include "contracts/StatusPanels.h"
#include "frame/components.h"
#include "frame/plain_text.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "platform/desktop/prepare_application.h"
#include "platform/desktop/register_desktop.h"
#include "platform/desktop/screen_scale.h"
#include "platform/files/LocalFiles.h"
#include "platform/files/program_folder.h"
#include "support/testing.h"

#include <cmath>

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
    void init() { RegisterDesktop({"00012345 01 02"}); }

    void QuestionMeansNoUnlessYesIsChosen_data()
    {
        QTest::addColumn<QList<Qt::Key>>("keys");
        QTest::addColumn<QString>("button"); // Clicked after the keys; "close" is the window's close box.
        QTest::addColumn<bool>("answer");

        QTest::newRow("return") << QList{Qt::Key_Return} << QString() << false;
        QTest::newRow("escape") << QList{Qt::Key_Escape} << QString() << false;
        QTest::newRow("close box") << QList<Qt::Key>() << u"close"_s << false;
        QTest::newRow("no") << QList<Qt::Key>() << u"cmdNo"_s << false;
        QTest::newRow("yes") << QList<Qt::Key>() << u"cmdYes"_s << true;
        QTest::newRow("moved to yes by key") << QList{Qt::Key_Tab, Qt::Key_Return} << QString() << true;
    }

    void QuestionMeansNoUnlessYesIsChosen()
    {
        QFETCH2(QList<Qt::Key>, keys, QString, button);
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

    void BoxesHaveTheirTitleTextAndButtons()
    {
        QStringList seen;
        const auto note = [&](QMessageBox& box) {
            QStringList captions;
            for (const QAbstractButton* button : box.buttons())
                captions << button->text();
            captions.sort();
            seen = {box.windowTitle(), box.text(), captions.join(u'|')};
            seen << (box.icon() == QMessageBox::Information ? u"i"_s
                     : box.icon() == QMessageBox::NoIcon    ? u"-"_s
                                                            : u"?"_s);
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

    void PointerIsNormalUnderABox()
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

    void PrinterDialogWithAFile()
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

    void TheScaleKeepsTheScreenInside_data()
    {
        Columns<QString, QSize, double>("wanted", "free", "scale");
        const QSize fullHd(1920, 1080);
        QTest::newRow("nothing said") << QString() << fullHd << 1.0;
        QTest::newRow("fits") << u"1.25"_s << fullHd << 1.25;
        QTest::newRow("as large as fits") << u"fit"_s << fullHd << 1.5;
        QTest::newRow("too large") << u"2"_s << fullHd << 1.5;
        QTest::newRow("a panel below") << u"2"_s << QSize(1920, 1050) << 1.25;
        QTest::newRow("a narrow screen") << u"fit"_s << QSize(1280, 1024) << 1.25;
        QTest::newRow("smaller than the form") << u"2"_s << QSize(1024, 600) << 1.0;
        QTest::newRow("a very large screen") << u"fit"_s << QSize(7680, 4320) << 4.0;
    }

    void TheScaleKeepsTheScreenInside()
    {
        QFETCH(QString, wanted);
        QFETCH(QSize, free);
        QTEST(ScaleInside(wanted, free), "scale");
    }

    void ProgramFolder_data()
    {
        Columns<QString, QString, QString>("chosen", "executableFolder", "expected");

        // %1 is a folder that can be written.
        QTest::newRow("chosen, made at need") << u"%1/a/b//"_s << u"%1"_s << u"%1/a/b"_s;
        QTest::newRow("beside the program") << QString() << u"%1/"_s << u"%1"_s;
        QTest::newRow("program lies where none may write")
            << QString() << u"/proc/1"_s << u"%1/config/capture-station"_s;
        QTest::newRow("packages' folder, for whom may write there")
            << QString() << u"/usr/bin"_s << u"%1/config/capture-station"_s;
        QTest::newRow("chosen below it") << u"/usr/lib/station"_s << u"%1"_s << u"%1/config/capture-station"_s;
        QTest::newRow("blank choice") << u"  "_s << u"/proc/1"_s << u"%1/config/capture-station"_s;
    }

    void ProgramFolder()
    {
        QFETCH3(QString, chosen, QString, executableFolder, QString, expected);
        const QTemporaryDir folder;
        const auto placed = [&](QString path) { return path.replace(u"%1"_s, folder.path()); };

        const QString found = FindProgramFolder(placed(chosen), placed(executableFolder), placed(u"%1/config"_s));
        QCOMPARE(found, placed(expected));
        QVERIFY(QDir(found).exists());
    }

    void ProgramFolderIsTakenOver()
    {
        RegisterFiles();
        const QTemporaryDir old;
        const QTemporaryDir now;
        const auto put = [](const QTemporaryDir& folder, const QString& name, const QByteArray& content) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QFile::WriteOnly) && file.write(content) == content.size());
        };
        const auto names = [](const QTemporaryDir& folder) { return QDir(folder.path()).entryList(QDir::Files); };
        const QString picture = u"Spool-7.jpg"_s;
        const QString list = u"PendingRows-dead.json"_s;
        put(old, u"CapSet.ini"_s, "old");
        put(old, picture, "picture");
        put(old, list, "list");
        const QString living = u"PendingRows-%1.json"_s.arg(Files().ProcessMark());
        put(old, living, "list");
        TakeOverProgramFolder(old.path(), now.path());
        QCOMPARE(names(now), QStringList());
        QVERIFY(QFile::remove(old.filePath(living)));
        put(now, u"CapSet.ini"_s, "new");
        TakeOverProgramFolder(old.path(), now.path());
        QCOMPARE(names(old), QStringList{u"CapSet.ini"_s});
        QCOMPARE(names(now), (QStringList{u"CapSet.ini"_s, list, picture}));
        QFile settings(now.filePath(u"CapSet.ini"_s));
        QVERIFY(settings.open(QFile::ReadOnly) && settings.readAll() == "new");
        QVERIFY(!QFileInfo(now.filePath(picture)).permissions().testFlag(QFileDevice::ReadGroup));
    }

    void PicturesOnTheirWayLieInTheMachinesFolder()
    {
        RegisterFiles();
        const QTemporaryDir program;
        const QTemporaryDir machine;
        const auto put = [&program](const QString& name) {
            QFile file(program.filePath(name));
            QVERIFY(file.open(QFile::WriteOnly));
        };
        for (const QString& name : {u"Spool-7.jpg"_s, u"Pictures-dead.journal"_s, u"Pacs-dead.json"_s,
                                    u".Movie-1-001.avi.x.part"_s, u"CapSet.ini"_s})
            put(name);
        // Another user's, or none: what the program's folder has stays there.
        QCOMPARE(FindStateFolder(machine.filePath(u"none"_s), program.path()).folder, program.path());
        const StatePlace place = FindStateFolder(machine.path(), program.path());
        QCOMPARE(place.machineFolder, machine.path());
        QCOMPARE(QFileInfo(place.folder).path(), machine.path());
        QCOMPARE(QFile::permissions(place.folder) & 0x77, QFile::Permissions());
        QCOMPARE(QDir(place.folder).entryList(QDir::Files | QDir::Hidden, QDir::Name),
                 (QStringList{u".Movie-1-001.avi.x.part"_s, u"Pacs-dead.json"_s, u"Pictures-dead.journal"_s,
                              u"Spool-7.jpg"_s}));
        QCOMPARE(QDir(program.path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"CapSet.ini"_s});
    }

    void ProgramEndsInThePump(); // The last: no event loop runs after it.

    void initTestCase()
    {
        RegisterDesktop({});
        PrepareApplication();
    }

    void WindowsFontsHaveKoreanLetters_data()
    {
        Columns<QString, QString>("family", "found");
        QTest::newRow("dotum") << u"돋움"_s << u"UnDotum"_s;
        QTest::newRow("gulim") << u"굴림"_s << u"UnDotum"_s;
        QTest::newRow("batang") << u"바탕"_s << u"UnBatang"_s;
        QTest::newRow("dotumche") << u"돋움체"_s << u"NanumGothicCoding"_s;
    }

    void WindowsFontsHaveKoreanLetters()
    {
        QFETCH(QString, family);
        QTEST(QFontInfo(QFont(family, 9)).family(), "found");
        QVERIFY(QFontMetrics(QFont(family, 9)).inFont(u'쳐'));
    }

    void TheWheelChoosesNothing()
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
        for (QWidget* under :
             {static_cast<QWidget*>(&list), static_cast<QWidget*>(editable.lineEdit()), date.findChild<QWidget*>(),
              static_cast<QWidget*>(&slider), static_cast<QWidget*>(&tabs)})
            notch(*under);
        QCOMPARE(list.currentIndex() + editable.currentIndex() + slider.value() + tabs.currentIndex(), 9);
        QCOMPARE(date.date(), QDate(2026, 11, 24));
        QVERIFY(text.hasFocus());

        list.showPopup();
        notch(*list.view()->viewport());
        QVERIFY(list.view()->verticalScrollBar()->value() > 0);
        QCOMPARE(list.currentIndex(), 0);
    }

    void InputIsHeldBackInAWait()
    {
        struct Window : QWidget
        {
            int closed = 0;
            void closeEvent(QCloseEvent*) override { ++closed; }
        } form;
        QPushButton shutter(u"캡쳐"_s, &form);
        QPushButton other(u"저장"_s, &form);
        QPushButton end(u"종료"_s, &form);
        QLineEdit text(&form);
        shutter.setProperty(ServedWhileWaiting, true);
        end.setProperty(LeavesWait, true);
        int top = 0;
        for (QWidget* each : {static_cast<QWidget*>(&shutter), static_cast<QWidget*>(&other),
                              static_cast<QWidget*>(&end), static_cast<QWidget*>(&text)})
            each->setGeometry(0, std::exchange(top, top + 30), 200, 30);
        QStringList done;
        for (QPushButton* button : {&shutter, &other, &end}) {
            button->setFocusPolicy(Qt::NoFocus);
            connect(button, &QPushButton::clicked, this, [&done, button] { done << button->text(); });
        }
        form.show();
        text.setFocus();
        QVERIFY(QTest::qWaitForWindowActive(&form));
        QWindow* window = form.windowHandle();
        int left = 0;
        const auto press = [&](const QWidget& control) {
            QTest::mouseClick(window, Qt::LeftButton, {}, control.geometry().center());
        };
        UseService<Desktop>().ServeUntil({.done =
                                              [&, began = false]() mutable {
                                                  if (!std::exchange(began, true)) {
                                                      QTest::keyClick(window, 'a');
                                                      QTest::keyClick(window, '1');
                                                      press(other);
                                                      press(shutter);
                                                      press(end);
                                                      window->close();
                                                  }
                                                  return done.size() == 1 && left == 2;
                                              },
                                          .leave = [&] { ++left; }});
        QCOMPARE(done, QStringList{u"캡쳐"_s});
        QCOMPARE(text.text(), QString());
        QCOMPARE(form.closed, 0);
        QTRY_COMPARE(form.closed, 1);
        QCOMPARE(done, (QStringList{u"캡쳐"_s, u"저장"_s, u"종료"_s}));
        QCOMPARE(text.text(), u"a1"_s);
    }

    void AnInnerWaitHoldsUpNoOuterOne()
    {
        bool isOuterDone = false;
        std::optional<waiting::Outcome> inner;
        QTimer::singleShot(0, this, [&] {
            QTimer::singleShot(50, this, [&] { isOuterDone = true; });
            inner = waiting::Await(u"inner"_s, [] { return false; });
        });
        QCOMPARE(waiting::Await(u"outer"_s, [&] { return isOuterDone; }), waiting::Outcome::Done);
        QCOMPARE(*inner, waiting::Outcome::Leaving);
        QVERIFY(!waiting::IsUnderWay());
    }

    void PanelsKeepAndShorten()
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
    }
};

void DesktopTest::ProgramEndsInThePump()
{
    Desktop& desktop = UseService<Desktop>();
    QCOMPARE(desktop.Command().bytes, "00012345 01 02"_ba);
    QVERIFY(!desktop.ProgramEnded());
    QTimer::singleShot(0, [] { EndProgram(); });
    QVERIFY(!desktop.ServeUntil({.done = [] { return false; }, .patienceMs = 60000}));
    QVERIFY(desktop.ProgramEnded());
}

QTEST_MAIN(DesktopTest)
#include "DesktopTest.moc"
