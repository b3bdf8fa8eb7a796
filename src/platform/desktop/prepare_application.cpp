#include "platform/desktop/prepare_application.h"

#include "frame/composition.h"
#include "platform/desktop/look.h"
#include "platform/desktop/WheelFilter.h"

#include <QApplication>
#include <QFont>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

using namespace Qt::StringLiterals;

void PrepareApplication()
{
    // Without these a Windows name leads to a font without Korean letters.
    QFont::insertSubstitutions(u"돋움"_s, {u"UnDotum"_s, u"NanumGothic"_s});
    QFont::insertSubstitutions(u"굴림"_s, {u"UnDotum"_s, u"NanumGothic"_s});
    QFont::insertSubstitutions(u"바탕"_s, {u"UnBatang"_s, u"NanumMyeongjo"_s});
    QFont::insertSubstitutions(u"돋움체"_s, {u"NanumGothicCoding"_s, u"UnDotum"_s});
    QApplication::setFont(QFont(u"돋움"_s, 9));

    const QLocale korean(QLocale::Korean, QLocale::SouthKorea);
    QLocale::setDefault(korean);
    auto* texts = new QTranslator(qApp);
    if (texts->load(korean, u"qtbase"_s, u"_"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(texts);

    ApplyLook(*qApp);
    FollowComposition();
    qApp->installEventFilter(new WheelFilter(qApp));
}
