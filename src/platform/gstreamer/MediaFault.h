#pragma once

#include <QString>

struct _GstMessage;

/// What an error message of the pipeline means to the operator.
QString FaultText(_GstMessage* message);
