// What both AMD adapter classes share: the borrowed ADL object, adapter selection and the board's identity.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "adapter/IVideoAdapter.h"
#include "amd/ADL.h"
#include "log/DebugLog.h"

namespace gputune::amd {

class AmdAdapter : public IVideoAdapter {
public:
    // Among the active adapters, by ADL's own index.
    bool SetActiveAdapterIndex(int index) final;
    int GetActiveAdapterIndex() const final;

    // Always of the first adapter that ADL lists, whatever the current one is. An identifier that cannot be converted
    // leaves SubsystemId 0 and the other fields filled, and the conversion's error is thrown.
    void GetVGAInfo(VgaInfo& info) final;

protected:
    // The tags under which a class reports the identity.
    struct IdentityTags {
        log::Tag subDeviceId;
        log::Tag adapterName;
        log::Tag busNumber;
    };

    // `adl` has opened its library.
    AmdAdapter(ADL& adl, IdentityTags const& tags) : m_Adl(adl), m_Tags(tags) {}

    // The board's subsystem identifier: the eight hexadecimal digits behind "&SUBSYS_" in the unique device
    // identifier. 0 when there are none. Throws as ParseHexLong does; the conversion is signed on purpose, so that
    // identifiers above 7FFFFFFF end in its "out of range".
    std::uint32_t GetVGASubDeviceID() const;

    // How a performance mode begins: it logs "begin" under its tag and reads the board's predefined profile. Nothing
    // when there is none, which is logged. Throws as GetVGASubDeviceID does.
    std::optional<PredefinedPerformanceParameter> ReadProfile(log::Tag tag) const;

    // Logged when a profile asks for a value that is no number the driver could be sent.
    static constexpr std::string_view kNoNumber = "predefined performance parameter out of range";

    ADL& m_Adl;

private:
    void FillNameAndBus(VgaInfo& info) const;

    IdentityTags m_Tags;
};

}  // namespace gputune::amd
