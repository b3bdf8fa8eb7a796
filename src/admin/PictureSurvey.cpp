#include "admin/PictureSurvey.h"

#include "admin/ArchiveYear.h"
#include "admin/file_checks.h"
#include "contracts/files.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// So often who waits is told.
constexpr int TellEvery = 500;
/// Decoding at the smallest scale still reads all of a file.
constexpr QSize DecodedRoom{64, 64};
constexpr qsizetype BatchSize = 64;
/// No camera of a clinic makes such; what is longer isn't read to its end.
constexpr qint64 LargestPictureBytes = 256LL * 1024 * 1024;

Look LookAtFile(const QString& path, PictureSurvey::Seen& seen)
{
    const QByteArray content = Files().ReadArchivedPiece(path, 0, LargestPictureBytes + 1);
    if (content.size() > LargestPictureBytes)
        return Look::Broken;
    seen = {DigestOf(content), content.size()};
    return LookAtPicture(content);
}

} // namespace

void PictureSurvey::State::Add(const std::function<void(News&)>& change)
{
    {
        const std::lock_guard lock(mutex);
        change(news);
    }
    if (++newsCount == EnoughNews)
        PostToScreen([] {});
}

PictureSurvey::News PictureSurvey::TakeNews()
{
    const std::lock_guard lock(m_state->mutex);
    m_state->newsCount = 0;
    return std::exchange(m_state->news, {});
}

PictureSurvey::PictureSurvey(const ArchiveYear& year)
{
    // The names are shared, not copied.
    QList<std::pair<QString, QStringList>> folders;
    for (const ArchiveYear::Section& section : year.Sections()) {
        folders.append({section.path, section.pictures});
        m_state->seen.emplace_back(section.hasRow.size());
    }
    m_thread.Post([folders, state = m_state] {
        auto seen = state->seen.begin();
        for (const auto& [folder, names] : folders) {
            auto own = (seen++)->begin();
            for (const QString& name : names) {
                if (state->ends)
                    return;
                const QString path = folder + name;
                try {
                    const Look look = LookAtFile(path, *own++);
                    if (look == Look::Broken)
                        state->Add([&](News& news) { news.findings.append({path, u"온전한 그림이 아님"_s}); });
                    else if (look == Look::Unknown)
                        state->Add([&](News& news) { news.unknown.append(path); });
                } catch (const PlatformError& error) {
                    // Deleted since it was listed is no finding.
                    if (Files().KindOf(path) != FileKind::None)
                        state->Add([&](News& news) { news.findings.append({path, error.Text()}); });
                }
                if (++state->read % TellEvery == 0)
                    PostToScreen([] {});
            }
        }
        state->isDone = true;
        PostToScreen([] {});
    });
}

QList<PictureSurvey::Finding> DecodeAll(const QStringList& paths, const std::function<void(int)>& progress)
{
    QList<PictureSurvey::Finding> findings;
    for (qsizetype from = 0; from < paths.size(); from += BatchSize) {
        const QStringList some = paths.mid(from, BatchSize);
        const auto batch = Pictures().LoadAll(some, DecodedRoom);
        for (int index = 0; index < some.size(); ++index) {
            const QImage picture = batch->Take(index);
            if (picture.isNull() && Files().KindOf(some[index]) != FileKind::None)
                findings.append({some[index], u"그림을 풀 수 없음"_s});
            else if (!CutFileName(picture).isEmpty())
                findings.append({some[index], u"끝이 잘린 그림"_s});
        }
        progress(static_cast<int>(from + some.size()));
    }
    return findings;
}
