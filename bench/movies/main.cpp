#include "movies/works.h"

#include "station/figures.h"

#include <QApplication>

#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    ChoosePlatform();
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    const QString work = arguments.value(1);
    const int option = arguments.value(2).toInt();
    if (work == u"free"_s)
        return BenchFreeRunning(option > 0 ? option : 2500);
    if (work == u"live"_s)
        return BenchLiveRecording(option > 0 ? option : 300);
    if (work == u"press"_s)
        return BenchPress();
    std::fputs("usage: bench_movies free [FRAMES PER FILE] | live [SECONDS] | press\n", stderr);
    return 2;
}
