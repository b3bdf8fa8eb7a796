#pragma once

class StatusPanels;
class VisitPictures;

/// What the findings screen takes from the screen that opens it.
struct FindingsOrigin
{
    VisitPictures& pictures; ///< Those of them that are chosen go into a new report.
    StatusPanels& panels;    ///< Patient data, as `ShowPatientPanels` fills them.
};

/// Brings up the findings screen for the visit that is shown, with its first six pictures that are chosen. An empty
/// grid opens nothing. A screen that is open with text of its own is brought to the front as it is.
void OpenFindings(const FindingsOrigin& origin);
