#pragma once

class NoticeStrip;
class PacsHandover;

/// The strip tells how it stands with the pictures on their way to the clinic's server, and offers to send at once;
/// where several orders of the hospital's worklist fit, it offers them.
void ShowPacsOn(NoticeStrip& strip, PacsHandover& pacs);
/// The screen closes: tells the operator how many wait where nothing goes on with them. Null: there is no server.
void EndPacs(PacsHandover* pacs);
