#include "capture/MomentsPanel.h"

#include "capture/Moments.h"
#include "frame/controls.h"
#include "frame/guard.h"
#include "frame/plain_text.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QPointer>
#include <QPushButton>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {
/// Pixels: half a dozen of them and the button fit beside the live picture in the large view's corner.
constexpr int ButtonWidth = 56;
constexpr int FileWidth = 58;
constexpr int Margin = 2;
constexpr int PressWidth = 2;

QString TimeText(int offsetMs)
{
    return u"%1%2초"_s.arg(offsetMs > 0 ? u"+"_s : QString()).arg(offsetMs / 1000.0, 0, 'f', 1);
}
} // namespace

MomentsPanel::MomentsPanel(Moments& moments, QWidget* parent)
    : QWidget(parent), m_moments(moments), m_layout(new QHBoxLayout(this)),
      m_file(new QPushButton(u"이 장면\n저장"_s, this))
{
    setObjectName(u"momentsPanel"_s);
    setAccessibleName(u"앞뒤 장면"_s);
    m_layout->setContentsMargins(Margin, Margin, Margin, Margin);
    m_layout->setSpacing(Margin);
    m_layout->addStretch();
    Named(m_file, u"이 장면 저장"_s, u"이 장면 저장"_s);
    m_file->setFixedWidth(FileWidth);
    m_file->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    m_layout->addWidget(m_file, 0, Qt::AlignTop);
    connect(m_file, &QPushButton::clicked, this, GuardedSlot([this] { FileChosen(); }));
    connect(&m_moments, &Moments::Changed, this, [this](const QString& id) {
        if (id == m_id)
            Build();
    });
    Build();
}

void MomentsPanel::ShowMoments(const QString& id)
{
    m_id = id;
    m_chosen = -1;
    Build();
}

int MomentsPanel::Columns() const
{
    return qMax(1, (width() - FileWidth - PressWidth - 4 * Margin) / (ButtonWidth + Margin));
}

void MomentsPanel::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (Columns() != m_columns)
        Build();
}

void MomentsPanel::Build()
{
    m_columns = Columns();
    const QList<Moments::Picture> pictures = m_moments.PicturesAround(m_id);
    const bool hadFocus = m_row != nullptr && m_row->isAncestorOf(focusWidget());
    // A button of the old row may be what is calling.
    if (m_row != nullptr) {
        m_row->hide();
        m_row->deleteLater();
    }
    m_row = new QWidget(this);
    m_buttons = new QButtonGroup(m_row);
    auto* rows = new QVBoxLayout(m_row);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(Margin);
    QHBoxLayout* row = nullptr;
    bool isBehind = false;
    for (int at = 0; at < pictures.size(); ++at) {
        const Moments::Picture& picture = pictures[at];
        if (at % m_columns == 0) {
            row = new QHBoxLayout;
            row->setSpacing(Margin);
            row->setAlignment(Qt::AlignLeft | Qt::AlignTop);
            rows->addLayout(row);
        }
        if (picture.offsetMs >= 0 && !std::exchange(isBehind, true)) {
            auto* press = Named(new QWidget(m_row), u"momentOfPress"_s, u"찍은 순간"_s);
            press->setAttribute(Qt::WA_StyledBackground);
            press->setToolTip(ToolTipText(u"찍은 순간"_s));
            press->setFixedWidth(PressWidth);
            row->addWidget(press);
        }
        QStringList marks;
        if (picture.isSharpest)
            marks << u"가장 선명"_s;
        if (picture.isFiled)
            marks << u"저장됨"_s;
        const QString time = TimeText(picture.offsetMs);
        auto* button =
            Named(new QToolButton(m_row), u"moment(%1)"_s.arg(at), (QStringList(time) + marks).join(u", "_s));
        button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        button->setIcon(QPixmap::fromImage(picture.small));
        button->setIconSize(picture.small.size().scaled(ButtonWidth - 4, ButtonWidth, Qt::KeepAspectRatio));
        button->setText((QStringList(time) + marks).join(u'\n'));
        button->setFixedWidth(ButtonWidth);
        button->setCheckable(true);
        button->setFocusPolicy(Qt::StrongFocus);
        button->setProperty("sharpest", picture.isSharpest);
        button->setChecked(at == m_chosen);
        m_buttons->addButton(button, at);
        row->addWidget(button);
        if (at == m_chosen && hadFocus)
            button->setFocus();
    }
    if (pictures.isEmpty() && !m_id.isEmpty()) {
        const bool isOver = m_moments.IsReady(m_id) || m_moments.Find({}, 0, m_id).isEmpty();
        const QString text = isOver ? u"앞뒤 장면이 없습니다."_s : u"앞뒤 장면을 준비하고 있습니다."_s;
        rows->addWidget(Named(new PlainLabel(text, m_row), u"noMoments"_s, text));
    }
    rows->addStretch();
    connect(m_buttons, &QButtonGroup::idClicked, this, GuardedSlot([this](int at) { Choose(at); }));
    m_layout->insertWidget(0, m_row);
    m_row->show();
    m_file->setEnabled(m_chosen >= 0 && m_chosen < pictures.size() && !pictures[m_chosen].isFiled);
}

void MomentsPanel::Choose(int at)
{
    m_chosen = at;
    const QList<Moments::Picture> pictures = m_moments.PicturesAround(m_id);
    if (at < 0 || at >= pictures.size())
        return;
    m_file->setEnabled(!pictures[at].isFiled);
    const QString caption = u"앞뒤 장면 "_s + TimeText(pictures[at].offsetMs);
    m_moments.Load(m_id, at, [self = QPointer(this), id = m_id, at, caption](const QImage& image) {
        // Another one may have been chosen meanwhile.
        if (self && self->m_id == id && self->m_chosen == at && !image.isNull())
            Q_EMIT self->Chosen(image, caption);
    });
}

void MomentsPanel::FileChosen()
{
    m_file->setEnabled(false);
    m_moments.FileMoment(m_id, m_chosen);
}
