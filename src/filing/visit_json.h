#pragma once

#include "visit/Visit.h"

#include <QJsonObject>

/// A visit in a list that waits.
QJsonObject ToJson(const Visit& visit);
/// What isn't there is empty.
Visit VisitFromJson(const QJsonObject& json);
