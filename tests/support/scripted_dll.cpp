// A scripted library as a DLL: its loader-visible export table follows what is hidden. SCRIPTED_LIBRARY names which of
// them it is.
#include "ScriptedCore.h"
#include "sim/standin/ExportTable.h"

extern "C" gputune::test::ScriptedLibrary* Scripted_Library() {
    gputune::test::ScriptedCore& library = gputune::test::SCRIPTED_LIBRARY();
    library.OnHiddenChange([](std::set<std::string> const& hidden) { gputune::sim::HideExports(hidden); });
    return &library;
}
