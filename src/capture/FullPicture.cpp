#include "capture/FullPicture.h"

#include "capture/LastStill.h"
#include "frame/plain_text.h"

#include <QCloseEvent>
#include <QFontInfo>
#include <QKeyEvent>
#include <QLayout>
#include <QMouseEvent>
#include <QScopeGuard>
#include <QScreen>

using namespace Qt::StringLiterals;

namespace {
/// A strip that stands for so long isn't for a short wait.
constexpr int StandingMs = 3000;
constexpr int LookMs = 500;
/// A black bar takes texts when so many of their letters, as wide as they are high, go into a line.
constexpr int LettersInBar = 6;
/// Height of the still that was taken last, of the screen's.
constexpr int StillShare = 3;
} // namespace

FullPicture::FullPicture(QWidget& form, const Parts& parts)
    : QWidget(&form, Qt::Window | Qt::FramelessWindowHint), m_form(form), m_picture(&parts.picture),
      m_strip(&parts.strip), m_mark(&parts.mark), m_captionTexts(parts.captions),
      m_picturePlace(parts.picture.geometry()), m_stripHeight(parts.strip.height()), m_markSize(parts.mark.size()),
      m_captions(new PlainLabel(this)), m_lastStill(new LastStill(this))
{
    setObjectName(QStringLiteral("fullPicture"));
    setWindowTitle(parts.picture.accessibleName());
    setAutoFillBackground(true);
    setPalette(Qt::black);
    m_captions->setObjectName(u"fullCaptions"_s);
    m_captions->setProperty("overPicture", true);
    m_captions->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_picture->installEventFilter(this);
    connect(m_strip, &NoticeStrip::Changed, this, &FullPicture::PlaceOverlays);
    connect(m_lastStill, &LastStill::Came, this, &FullPicture::PlaceOverlays);
    m_standing.setSingleShot(true);
    m_standing.setInterval(StandingMs);
    connect(&m_standing, &QTimer::timeout, this, [this] {
        m_stands = true;
        MakeRoom();
    });
    m_shape.setInterval(LookMs);
    connect(&m_shape, &QTimer::timeout, this, [this] {
        if (m_picture != nullptr && BarWidth() != m_bar)
            PlaceOverlays();
    });
    PlaceOverlays();
}

FullPicture::~FullPicture()
{
    Return();
}

void FullPicture::Fill()
{
    setGeometry(m_form.screen()->geometry());
    const QStringList texts = m_captionTexts();
    m_captionLines = texts;
    m_captions->setAccessibleName(texts.join(u' '));
    MoveTo(*this, rect());
    m_shape.start();
    showFullScreen();
    activateWindow();
    setFocus();
}

void FullPicture::Return()
{
    if (!HasParts() || !IsOnScreen())
        return;
    m_shape.stop();
    m_lastStill->Drop();
    MoveTo(m_form, m_picturePlace);
    GoHome();
    hide();
    m_form.activateWindow();
}

void FullPicture::SetHome(QWidget* window, const QRect& place, const QRect& overlaid)
{
    m_home = window;
    m_homePlace = place;
    m_overlaid = overlaid;
    if (HasParts() && !IsOnScreen())
        GoHome();
}

void FullPicture::GoHome()
{
    QWidget* window = m_home != nullptr ? m_home.data() : &m_form;
    if (m_picture->parentWidget() != window) {
        const bool isShown = !m_picture->isHidden();
        m_picture->setParent(window);
        m_picture->setVisible(isShown);
    }
    m_picture->setGeometry(m_home != nullptr ? m_homePlace : m_picturePlace);
    if (m_home != nullptr)
        m_picture->raise();
    else
        m_picture->lower();
    PlaceOverlays();
}

void FullPicture::MoveTo(QWidget& window, const QRect& place)
{
    for (QWidget* each :
         {static_cast<QWidget*>(m_picture.data()), static_cast<QWidget*>(m_strip.data()), m_mark.data()}) {
        const bool isShown = !each->isHidden();
        each->setParent(&window);
        each->setVisible(isShown);
    }
    m_picture->setGeometry(place);
    PlaceOverlays();
}

double FullPicture::Scale() const
{
    return IsOnScreen() ? qMax(1.0, double(m_picture->height()) / m_picturePlace.height()) : 1;
}

int FullPicture::BarWidth() const
{
    if (!IsOnScreen())
        return 0;
    const QSize shape = m_picture->PictureShape().scaled(m_picture->size(), Qt::KeepAspectRatio);
    return shape.isEmpty() ? 0 : (m_picture->width() - shape.width()) / 2;
}

void FullPicture::SetScale()
{
    QFont font = m_form.font();
    if (Scale() > 1)
        font.setPixelSize(qRound(QFontInfo(font).pixelSize() * Scale()));
    m_mark->setFont(font);
    m_captions->setFont(font);
}

void FullPicture::PlaceOverlays()
{
    // The strip's own layout tells of itself.
    if (!HasParts() || m_placing)
        return;
    m_placing = true;
    const auto placed = qScopeGuard([this] { m_placing = false; });
    const QRect place = IsOnScreen() ? m_picture->geometry() : m_overlaid.isEmpty() ? m_picturePlace : m_overlaid;
    const double scale = Scale();
    SetScale();
    m_bar = BarWidth();
    const int bar = m_bar >= LettersInBar * QFontInfo(m_captions->font()).pixelSize() ? m_bar : 0;
    m_strip->setLook(scale, bar > 0);
    QRect strip(place.topLeft(), QSize(bar > 0 ? bar : place.width(), qRound(m_stripHeight * scale)));
    if (bar > 0)
        strip.setHeight(qMin(place.height() / 2, qMax(strip.height(), m_strip->layout()->totalHeightForWidth(bar))));
    strip.moveBottom(place.bottom());
    m_strip->setGeometry(strip);
    m_strip->raise();
    QRect mark(QPoint(), m_markSize * scale);
    mark.moveBottomRight(m_strip->isHidden() || bar > 0 ? place.bottomRight() : QPoint(place.right(), strip.top() - 1));
    m_mark->setGeometry(mark);
    m_mark->raise();
    PlaceCaptions(bar);
    const QSize still = place.size() / StillShare;
    m_lastStill->setGeometry(
        QRect(QPoint(place.left(), (m_strip->isHidden() ? place.bottom() : strip.top() - 1) - still.height()), still));
    m_lastStill->raise();

    MakeRoom();
}

void FullPicture::MakeRoom()
{
    if (m_strip->isHidden()) {
        m_standing.stop();
        m_stands = false;
    } else if (!m_stands && !m_standing.isActive()) {
        m_standing.start();
    }
    const bool isBeside = m_strip->width() < m_picture->width() || (m_home != nullptr && !IsOnScreen());
    const bool isOver = m_stands && !isBeside;
    m_picture->setPictureMargins(QMargins(0, 0, 0, isOver ? m_strip->height() : 0));
}

void FullPicture::PlaceCaptions(int bar)
{
    m_captions->setVisible(IsOnScreen());
    if (!IsOnScreen())
        return;
    const QFontMetrics metrics = m_captions->fontMetrics();
    const int margin = metrics.height() / 3;
    // The mark of a movie has the left half.
    const int room = bar > 0 ? bar : width() / 2;
    QStringList lines;
    for (const QString& text : bar > 0 ? m_captionLines : QStringList{m_captionLines.join(u"   "_s)})
        lines << metrics.elidedText(ComposedText(text), Qt::ElideRight, room - 2 * margin);
    int textWidth = 0;
    for (const QString& line : std::as_const(lines))
        textWidth = qMax(textWidth, metrics.horizontalAdvance(line));
    m_captions->setText(lines.join(u'\n'));
    m_captions->setMargin(margin);
    const QSize size(bar > 0 ? bar : textWidth + 2 * margin + 2,
                     metrics.lineSpacing() * static_cast<int>(lines.size()) + 2 * margin);
    m_captions->setGeometry(QRect(QPoint(width() - size.width(), 0), size));
    m_captions->raise();
}

void FullPicture::ShowStill(const void* still, const QByteArray& content)
{
    if (IsFull())
        m_lastStill->Take(still, content);
}

void FullPicture::ShowNumber(const void* still, int number)
{
    m_lastStill->TakeNumber(still, number);
}

bool FullPicture::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_picture || event->type() != QEvent::MouseButtonDblClick ||
        static_cast<QMouseEvent*>(event)->button() != Qt::LeftButton)
        return QWidget::eventFilter(watched, event);
    if (IsFull())
        Return();
    else
        Fill();
    return true;
}

void FullPicture::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Cancel))
        Return();
    else
        QWidget::keyPressEvent(event);
}

void FullPicture::closeEvent(QCloseEvent* event)
{
    event->ignore();
    Return();
}

void FullPicture::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (m_picture == nullptr || m_picture->parentWidget() != this)
        return;
    m_picture->setGeometry(rect());
    PlaceOverlays();
}
