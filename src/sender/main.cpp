#include "frame/components.h"
#include "frame/journal.h"
#include "platform/dicom/register_dicom.h"
#include "platform/files/act_source.h"
#include "platform/files/LocalFiles.h"
#include "platform/journal/StandardErrorJournal.h"
#include "platform/movies/register_movies.h"
#include "platform/process/own_memory.h"
#include "platform/profile/PrivateProfile.h"
#include "platform/setup/register_setup.h"
#include "platform/sql/register_sql.h"
#include "platform/terminal/register_terminal.h"
#include "records/ActJournal.h"
#include "records/Statement.h"
#include "sender/pauses.h"
#include "sender/SenderLife.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

int main(int argc, char* argv[])
{
    KeepMemoryClosed();
    // The live picture and whoever works at the screen come first.
    constexpr int Politeness = 10;
    [[maybe_unused]] const int priority = nice(Politeness);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("capture-station"));
    // `--pauses PERCENT` lets as much of each pause pass.
    if (const QStringList arguments = QCoreApplication::arguments(); arguments.value(1) == QStringLiteral("--pauses"))
        pauses::percent = std::clamp(arguments.value(2).toInt(), 1, 100);
    RegisterJournal();
    RegisterFiles();
    RegisterTerminal();
    RegisterProfile();
    RegisterSql();
    RegisterSetup(MissingRoot::IsTold);
    RegisterDicom();
    RegisterMovies();
    InstallService<ActJournal>(std::make_unique<ActJournal>(ActSourceHere(u"capture-station-sender")));
    bool isDone = false;
    journal::NotingFaults([&isDone] { isDone = LiveAsSender(); });
    UseService<ActJournal>().End();
    Connection.reset();
    EndJournal();
    // As in the station: a thread that the kernel holds would meet the end of what it works on.
    std::_Exit(isDone ? 0 : 1);
}
