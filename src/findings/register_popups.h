#pragma once

/// Registers the findings screen's two popups.
void RegisterFindingsPopups();
