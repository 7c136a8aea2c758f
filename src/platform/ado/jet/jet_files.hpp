#pragma once
// What the Access session does to whole files through the provider: make a
// new empty Jet 4 file (standing for the catalog object's Create with
// "Jet OLEDB:Engine Type=5"), and learn whether a file is held open by a
// connection of this process before it is deleted.
#include "zolsdk/platform/text.hpp"

namespace zolsdk::ado {

// Makes the file that the connection text's "Data Source" names, as an
// Access 2000 (Jet 4) database without a password. Fails (0x80004005, the
// provider's words) when the file exists or cannot be written, or when the
// Engine Type asks for another format.
void CreateJetDatabase(const String& connectionText);

// True while a connection of this process has the file open. Jet opens a
// file so that it cannot be deleted under it; callers check this first.
bool JetFileInUse(StringView path);

// Forgets what the provider keeps of a file between statements, so that a
// file made again at the same path is read afresh.
void ReleaseJetFile(StringView path);

// The "Data Source" of a connection text as a file-system path
// (back-slashes become "/").
String JetDataSource(const String& connectionText);

} // namespace zolsdk::ado
