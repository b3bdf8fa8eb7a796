#pragma once

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmnet/dimse.h>

#include <QCborMap>

/// What servers say of their own accord.
namespace linkreport {

/// A server's report of storage commitment, whose command has been read: reads its data set, and puts transaction and
/// objects into the map.
OFCondition Read(T_ASC_Association& association, T_ASC_PresentationContextID context,
                 const T_DIMSE_N_EventReportRQ& told, int seconds, QCborMap& report);
/// Answers it.
OFCondition Respond(T_ASC_Association& association, T_ASC_PresentationContextID context,
                    const T_DIMSE_N_EventReportRQ& told, int status);

} // namespace linkreport
