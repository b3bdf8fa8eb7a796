#pragma once

#include "contracts/cd.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/services.h"
#include "platform/disc/register_disc.h"
#include "platform/files/LocalFiles.h"
#include "support/FailingFiles.h"
#include "support/ScriptedDesktop.h"
#include "support/testing.h"

/// A CD writer with a staging folder and an image of its own. Before the program xorriso a script can be put, which
/// gets its arguments and has `REAL`, `STAGED` and `IMAGES` to work with.
class DiscInABox
{
public:
    DiscInABox()
    {
        qputenv("XDG_DATA_HOME", (m_folder.path() + QStringLiteral("/data")).toUtf8());
        QDir().mkpath(Images());
        desk = &ScriptedDesktop::Install();
        RegisterFiles();
        files = &FailingFiles::Install();
        RegisterDisc();
        UseService<BurnerOptions>().UseImage(Images() + QStringLiteral("cd.iso"));
        staging = Burner()->burnArea();
    }
    ~DiscInABox()
    {
        qputenv("PATH", m_path);
        RegisterDisc();
    }

    static std::unique_ptr<XPBurn> Burner() { return CreateObject<XPBurn>(QStringLiteral("BaydenBurn.XPBurn")); }
    QString Images() const { return m_folder.path() + QStringLiteral("/images/"); }
    QStringList ImageNames() const { return QDir(Images()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

    void Stage(const QString& name, const QByteArray& content)
    {
        QDir().mkpath(QFileInfo(staging + name).path());
        WriteWholeFile(staging + name, content);
    }

    /// Puts a shell script in the program's place; an empty one takes the program away.
    void Replace(const QString& script)
    {
        const QString folder = m_folder.path() + QStringLiteral("/bin");
        QDir().mkpath(folder);
        QFile::remove(folder + QStringLiteral("/xorriso"));
        if (script.isEmpty()) {
            qputenv("PATH", folder.toUtf8());
            return;
        }
        const QString head = QStringLiteral("#!/bin/bash\nREAL=%1\nSTAGED='%2'\nIMAGES='%3'\n")
                                 .arg(QStandardPaths::findExecutable(QStringLiteral("xorriso")), staging, Images());
        QFile file(folder + QStringLiteral("/xorriso"));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("no script");
        file.write((head + script + u'\n').toUtf8());
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("PATH", folder.toUtf8() + ':' + m_path);
    }

    static QWidget* Window()
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == QStringLiteral("burnWindow"))
                return widget;
        }
        return nullptr;
    }
    static QString Said()
    {
        return Window() == nullptr ? QString() : Window()->findChild<QLabel*>(QStringLiteral("lblStage"))->text();
    }
    static void Press(const QString& button)
    {
        QTest::mouseClick(Window()->findChild<QPushButton*>(button), Qt::LeftButton);
    }
    static bool Burn()
    {
        const auto burner = Burner();
        burner->Startburn();
        return QTest::qWaitFor([&] { return !burner->isburning(); }, 30000);
    }

    /// Regular files on an image: path and size, by one of its two sets of names.
    QStringList NamesOn(const QString& image, bool asWindowsDoes) const
    {
        QProcess reader;
        reader.start(QStringLiteral("xorriso"),
                     {QStringLiteral("-no_rc"), QStringLiteral("-charset"), QStringLiteral("UTF-8"),
                      QStringLiteral("-read_fs"), asWindowsDoes ? QStringLiteral("norock") : QStringLiteral("any"),
                      QStringLiteral("-indev"), QStringLiteral("stdio:") + Images() + image, QStringLiteral("-find"),
                      QStringLiteral("/"), QStringLiteral("-type"), QStringLiteral("f")});
        reader.waitForFinished();
        QStringList names;
        for (const QString& line : QString::fromUtf8(reader.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts))
            names << line.mid(1).chopped(1);
        names.sort();
        return names;
    }
    QByteArray ContentOn(const QString& image, const QString& path) const
    {
        const QString to = m_folder.path() + QStringLiteral("/extracted");
        QFile::remove(to);
        QProcess::execute(QStringLiteral("xorriso"),
                          {QStringLiteral("-no_rc"), QStringLiteral("-report_about"), QStringLiteral("SORRY"),
                           QStringLiteral("-charset"), QStringLiteral("UTF-8"), QStringLiteral("-osirrox"),
                           QStringLiteral("on"), QStringLiteral("-indev"), QStringLiteral("stdio:") + Images() + image,
                           QStringLiteral("-extract"), path, to});
        return Files().ReadFile(to);
    }

    ScriptedDesktop* desk = nullptr;
    FailingFiles* files = nullptr;
    QString staging;

private:
    QTemporaryDir m_folder;
    QByteArray m_path = qgetenv("PATH");
};
