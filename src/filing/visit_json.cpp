#include "filing/visit_json.h"

using namespace Qt::StringLiterals;

QJsonObject ToJson(const Visit& visit)
{
    return {{u"chart"_s, visit.chart}, {u"yuhyung"_s, visit.yuhyung},       {u"ymd"_s, visit.ymd},
            {u"etc"_s, visit.etc},     {u"captureDir"_s, visit.captureDir}, {u"imageExt"_s, visit.imageExt}};
}

Visit VisitFromJson(const QJsonObject& json)
{
    const auto text = [&json](const QString& key) { return json.value(key).toString(); };
    return {text(u"chart"_s), text(u"yuhyung"_s),    text(u"ymd"_s),
            text(u"etc"_s),   text(u"captureDir"_s), text(u"imageExt"_s)};
}
