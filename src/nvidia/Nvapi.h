// The process-wide binding to NVAPI: each function of nvapi_functions.inc is a member that is called like the function
// itself, NvAPI_Initialize included.
//
//     int const status = nvapi.NvAPI_EnumPhysicalGPUs(handles, &count);
//
// The status is NVAPI's, or what NvapiLoader::Call says about a library or function that is not there.
#pragma once

#include "nvidia/NvapiLoader.h"

namespace gputune::nvidia {

class Nvapi : public NvapiLoader {
    template <NvapiSlot Slot, std::uint32_t Identifier, class... Params>
    class Binding {
    public:
        explicit Binding(NvapiLoader& loader) : loader_(loader) {}
        int operator()(Params... args) const { return loader_.Call<Params...>(Slot, Identifier, args...); }

    private:
        NvapiLoader& loader_;
    };

public:
#define NVAPI_FUNCTION(name, identifier, ...) Binding<NvapiSlot::name, identifier, __VA_ARGS__> const name{*this};
#include "nvidia/nvapi_functions.inc"
};

}  // namespace gputune::nvidia
