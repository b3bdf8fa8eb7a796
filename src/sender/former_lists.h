#pragma once

class Ledger;

/// Takes over, once, the lists of pictures for the server that stations of earlier releases have left on this machine:
/// what waited goes, and what had been sent stays known as sent.
void TakeFormerLists(Ledger& ledger);
