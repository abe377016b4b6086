#include "platform/threads.h"

#include <windows.h>

namespace gputune::platform {

namespace {

CRITICAL_SECTION* Section(void* section) {
    return static_cast<CRITICAL_SECTION*>(section);
}

}  // namespace

Lock::Lock() : section_(new CRITICAL_SECTION) {
    ::InitializeCriticalSection(Section(section_));
}

Lock::~Lock() {
    ::DeleteCriticalSection(Section(section_));
    delete Section(section_);
}

void Lock::lock() {
    ::EnterCriticalSection(Section(section_));
}

void Lock::unlock() {
    ::LeaveCriticalSection(Section(section_));
}

void SleepMilliseconds(std::uint32_t duration) {
    ::Sleep(duration);
}

}  // namespace gputune::platform
