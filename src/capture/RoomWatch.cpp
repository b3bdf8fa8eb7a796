#include "capture/RoomWatch.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/StillFiles.h"
#include "frame/services.h"
#include "session/VisitContext.h"

#include <QPointer>

using namespace Qt::StringLiterals;

namespace {
constexpr int EachMs = 20'000;
/// Below this the operator is told. In bytes.
constexpr qint64 LeastBytes = 1'000'000'000;
} // namespace

RoomWatch::RoomWatch(StillFiles& files, QObject* parent) : QObject(parent), m_files(files)
{
    connect(&m_timer, &QTimer::timeout, this, &RoomWatch::Look);
    m_timer.start(EachMs);
    QTimer::singleShot(0, this, &RoomWatch::Look);
}

void RoomWatch::Look()
{
    if (m_isAsking)
        return;
    m_isAsking = true;
    m_files.Post([self = QPointer(this), root = ClientSetup.CaptureRoot] {
        qint64 freeBytes = -1;
        try {
            freeBytes = Files().FreeBytes(root);
        } catch (const PlatformError&) {
            // A share that can't be asked is told of otherwise.
        }
        PostToScreen([self, freeBytes] {
            if (self)
                self->Answer(freeBytes);
        });
    });
}

void RoomWatch::Answer(qint64 freeBytes)
{
    m_isAsking = false;
    const bool isLow = freeBytes >= 0 && freeBytes < LeastBytes;
    Q_EMIT Changed(isLow ? u"저장 폴더에 남은 공간이 적습니다. (%1MB)"_s.arg(freeBytes / 1'000'000) : QString());
}
