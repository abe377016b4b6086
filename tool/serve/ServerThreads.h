// The threads that serve connections: how long one may take, and how many there are. civetweb asks for both
// (cmake/civetweb/threads.h); its own threads would all run from the beginning, and listen to a client that sends a
// byte now and then for ever.
#pragma once

#include <chrono>

namespace gputune::tool {

// This thread takes up a connection, which may take so long. Starts another thread when no other is free.
void BeginConnection(std::chrono::milliseconds limit);
// From now on, the connection of this thread may take so long. With `Further::Less`, if it may not take less anyway.
enum class Further { Exactly, Less };
void LimitConnection(std::chrono::milliseconds limit, Further further = Further::Less);
// This thread is free again.
void EndConnection();

// Starts all threads that were not needed yet, so that they can end. Before the server does.
void StartRemainingThreads();

}  // namespace gputune::tool
