// Between the scripted library and the way in which its clients find its entry points.
#pragma once

#include <set>
#include <string>

// The address of an entry point that is not hidden, else null.
void* ScriptedAdl_Find(char const* name);

std::set<std::string> const& ScriptedAdl_Hidden();

// Told after every change of the hidden names.
void ScriptedAdl_HiddenChanged();
