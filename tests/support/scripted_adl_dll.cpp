// The scripted library as a DLL: its loader-visible export table follows what is hidden.
#include "standin/ExportTable.h"
#include "scripted_adl_exports.h"

void ScriptedAdl_HiddenChanged() {
    gputune::sim::HideExports(ScriptedAdl_Hidden());
}
