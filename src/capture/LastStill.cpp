#include "capture/LastStill.h"

#include "contracts/pictures.h"
#include "frame/colours.h"
#include "frame/services.h"
#include "text/text_routines.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace {
constexpr int ShownMs = 2000;
/// Room for its number, of its height.
constexpr int NumberShare = 8;
} // namespace

LastStill::LastStill(QWidget* parent) : QWidget(parent)
{
    setObjectName(u"lastStill"_s);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    m_end.setSingleShot(true);
    m_end.setInterval(ShownMs);
    connect(&m_end, &QTimer::timeout, this, &LastStill::Drop);
    hide();
}

LastStill::~LastStill() = default;

void LastStill::Take(const void* still, const QByteArray& content)
{
    m_still = still;
    m_number.clear();
    const QSize room = parentWidget()->size() * devicePixelRatioF() / 3;
    m_decoding = ::Pictures().LoadContent(content, room);
    connect(m_decoding.get(), &PictureBatch::Ready, this, &LastStill::Show);
    if (m_decoding->IsReady(0))
        Show();
}

void LastStill::TakeNumber(const void* still, int number)
{
    if (still != m_still)
        return;
    m_number = number > 0 ? NumberText(number) : u"대기"_s;
    setAccessibleName(u"그림 %1"_s.arg(m_number));
    update();
}

void LastStill::Show()
{
    if (m_decoding == nullptr || !m_decoding->IsReady(0))
        return;
    m_image = std::exchange(m_decoding, nullptr)->Take(0);
    if (m_image.isNull())
        return;
    m_end.start();
    show();
    raise();
    Q_EMIT Came();
    update();
}

void LastStill::Drop()
{
    m_end.stop();
    m_decoding.reset();
    m_still = nullptr;
    m_image = {};
    hide();
}

void LastStill::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const int line = height() / NumberShare;
    QRect room = rect().adjusted(0, 0, 0, -line);
    QRect place(QPoint(), m_image.size().scaled(room.size(), Qt::KeepAspectRatio));
    place.moveBottomLeft(room.bottomLeft());
    const QRect foot(place.left(), place.bottom() + 1, place.width(), line);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, m_image);
    painter.fillRect(foot, QColor::fromRgb(NoticeColour));
    painter.setPen(QColor::fromRgb(NoticeTextColour));
    QFont font = painter.font();
    font.setPixelSize(qMax(12, line * 2 / 3));
    font.setBold(true);
    painter.setFont(font);
    painter.drawText(foot, Qt::AlignCenter, m_number);
    painter.drawRect(place.united(foot).adjusted(0, 0, -1, -1));
}
