#include "figures.h"

#include <QApplication>

#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    ChoosePlatform();
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    const QString work = arguments.value(1);
    const QString mode = arguments.value(2);
    if (work == u"stalls"_s)
        return BenchStalls();
    if (work == u"spool"_s)
        return BenchSpool();
    if (work == u"still"_s)
        return BenchStill();
    if (work == u"thumbnails"_s)
        return BenchThumbnails();
    if (work == u"findings"_s)
        return BenchFindings();
    if (work == u"large"_s)
        return BenchLarge();
    if (work == u"sheet"_s)
        return BenchSheet();
    if (work == u"sheetmemory"_s)
        return BenchSheetMemory();
    if (work == u"bombs"_s)
        return BenchBombs();
    if (work == u"import"_s)
        return BenchImport();
    if (work == u"delete"_s)
        return BenchDelete();
    if (work == u"pacs"_s)
        return BenchPacs();
    if (work == u"start"_s)
        return BenchStart(mode);
    if (work == u"memory"_s)
        return BenchMemory(mode);
    std::fputs("usage: bench_station "
               "still|stalls|spool|thumbnails|findings|large|sheet|sheetmemory|bombs|import|delete|pacs|start|memory\n",
               stderr);
    return 2;
}
