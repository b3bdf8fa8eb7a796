#include "admin/waiting_lists.h"

#include "admin/commands.h"
#include "contracts/desktop.h"
#include "filing/capture_folders.h"
#include "frame/components.h"
#include "frame/waiting.h"

#include <QElapsedTimer>

#include <utility>

using namespace Qt::StringLiterals;

namespace {
constexpr int LookMs = 200;
} // namespace

QString HolderText(Holder holder, const QString& foreignOwner)
{
    QString text = u"끝난 스테이션"_s;
    if (holder == Holder::Living)
        text = u"실행 중인 스테이션"_s;
    else if (holder == Holder::Elsewhere)
        text = u"다른 컴퓨터의 스테이션"_s;
    return foreignOwner.isEmpty() ? text : u"%1, 사용자 %2"_s.arg(text, foreignOwner);
}

QJsonObject HolderFacts(Holder holder, const QString& foreignOwner)
{
    QJsonObject facts{{u"holder"_s, holder == Holder::Living      ? u"living"_s
                                    : holder == Holder::Elsewhere ? u"elsewhere"_s
                                                                  : u"ended"_s}};
    if (!foreignOwner.isEmpty())
        facts[u"owner"_s] = foreignOwner;
    return facts;
}

int ShowFolders(const std::function<int(const QString& folder)>& show)
{
    int lines = show(LocalFolder());
    for (const QString& folder : Surroundings.foldersOfOthers())
        lines += folder + u'\\' == LocalFolder() ? 0 : show(folder + u'\\');
    return lines;
}

void AwaitNothingLeft(const std::function<int()>& left, int patienceMs)
{
    int before = left();
    QElapsedTimer unchanged;
    unchanged.start();
    while (left() > 0 && unchanged.elapsed() < patienceMs) {
        waiting::ServeFor(
            LookMs, [&] { return left() < before; }, WaitInput::Served);
        if (left() != std::exchange(before, left()))
            unchanged.restart();
    }
}
