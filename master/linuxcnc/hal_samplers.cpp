#include "master/linuxcnc/hal_samplers.h"

// HAL's own headers.
#include <rtapi.h>
// Behind rtapi.h:
#include <hal.h>

#include <array>
#include <utility>

#include "platform/posix/attached_memory.h"
#include "platform/process.h"

namespace wavo::master {

namespace {

/// Numbers of the memory of HAL and of its first sampler.
constexpr int kHalKey = 0x48414C32;
constexpr int kSamplerKey = 0x48534130;

int KeyOf(std::size_t channel) {
    return kSamplerKey + static_cast<int>(channel);
}

std::string NameOfSampler(std::size_t channel) {
    return "sampler." + std::to_string(channel);
}

double ValueOf(hal_type_t type, const hal_stream_data& data) {
    switch (type) {
        case HAL_FLOAT:
            return data.f;
        case HAL_BIT:
            return data.b ? 1.0 : 0.0;
        case HAL_S32:
            return data.s;
        case HAL_U32:
            return data.u;
        default:
            return 0.0;  // refused by Attach
    }
}

class StreamChannel final : public SampleChannel {
 public:
    StreamChannel() = default;
    ~StreamChannel() override {
        if (m_attached) {
            hal_stream_detach(&m_stream);
        }
    }
    StreamChannel(const StreamChannel&) = delete;
    StreamChannel& operator=(const StreamChannel&) = delete;

    bool Attach(int component, std::size_t channel, std::string* error) {
        const int waiting = platform::ProcessesAttached(KeyOf(channel));
        if (waiting > 1) {
            *error = NameOfSampler(channel) + " has a reader already";
            return false;
        }
        if (waiting < 1 || hal_stream_attach(&m_stream, component, KeyOf(channel), nullptr) < 0) {
            *error = "cannot attach to " + NameOfSampler(channel);
            return false;
        }
        m_attached = true;
        const int count = hal_stream_element_count(&m_stream);
        for (int column = 0; column < count; ++column) {
            const hal_type_t type = hal_stream_element_type(&m_stream, column);
            if (type != HAL_FLOAT && type != HAL_BIT && type != HAL_S32 && type != HAL_U32) {
                *error = NameOfSampler(channel) + " has a column of an unknown type";
                return false;
            }
            m_types.push_back(type);
        }
        return true;
    }

    [[nodiscard]] std::size_t Columns() const override { return m_types.size(); }

    bool Read(std::span<double> values, std::uint32_t* number) override {
        std::array<hal_stream_data, HAL_STREAM_MAX_PINS> data{};
        unsigned count = 0;
        if (!hal_stream_readable(&m_stream) ||
            hal_stream_read(&m_stream, data.data(), &count) < 0) {
            return false;
        }
        *number = count;
        for (std::size_t column = 0; column < m_types.size(); ++column) {
            values[column] = ValueOf(m_types[column], data[column]);
        }
        return true;
    }

    [[nodiscard]] std::uint32_t Overruns() const override {
        return static_cast<std::uint32_t>(hal_stream_num_overruns(&m_stream));
    }

 private:
    mutable hal_stream_t m_stream{};  // the library takes it changeable also to look at it
    bool m_attached = false;
    std::vector<hal_type_t> m_types;
};

class AttachedSamplers final : public HalSamplers {
 public:
    AttachedSamplers() = default;
    ~AttachedSamplers() override {
        m_channels.clear();
        if (m_component >= 0) {
            hal_exit(m_component);
        }
    }
    AttachedSamplers(const AttachedSamplers&) = delete;
    AttachedSamplers& operator=(const AttachedSamplers&) = delete;

    bool Open(const std::vector<std::size_t>& channels, const std::vector<std::size_t>& columns,
              std::string* error) {
        rtapi_set_msg_level(RTAPI_MSG_NONE);  // what fails is told in our words
        m_component = hal_init(kComponentName);
        if (m_component < 0) {
            // One that was killed leaves its name taken for good.
            const std::string name =
                std::string(kComponentName) + "-" + std::to_string(platform::ProcessId());
            m_component = hal_init(name.c_str());
        }
        if (m_component < 0) {
            *error = "cannot make a HAL component";
            return false;
        }
        for (std::size_t i = 0; i < channels.size(); ++i) {
            auto channel = std::make_unique<StreamChannel>();
            if (!channel->Attach(m_component, channels[i], error)) {
                return false;
            }
            if (channel->Columns() != columns[i]) {
                *error = NameOfSampler(channels[i]) + " has " + std::to_string(channel->Columns()) +
                         " columns in place of " + std::to_string(columns[i]);
                return false;
            }
            m_channels.push_back(std::move(channel));
        }
        m_first_key = KeyOf(channels.front());
        return true;
    }

    void SetReady() override { hal_ready(m_component); }

    [[nodiscard]] std::vector<SampleChannel*> Channels() override {
        std::vector<SampleChannel*> channels;
        for (const auto& channel : m_channels) {
            channels.push_back(channel.get());
        }
        return channels;
    }

    [[nodiscard]] bool HaveWriter() const override {
        return platform::ProcessesAttached(m_first_key) > 1;  // one is this process
    }

 private:
    int m_component = -1;
    int m_first_key = 0;
    std::vector<std::unique_ptr<StreamChannel>> m_channels;
};

}  // namespace

bool ControllerRuns(std::string* error) {
    const int attached = platform::ProcessesAttached(kHalKey);
    if (attached == platform::kMemoryOfAnotherUser) {
        *error = "the controller runs as another user";
    } else if (attached < 1) {
        *error = "no controller is running";
    }
    return attached >= 1;
}

std::unique_ptr<HalSamplers> HalSamplers::Attach(const std::vector<std::size_t>& channels,
                                                 const std::vector<std::size_t>& columns,
                                                 std::string* error) {
    auto samplers = std::make_unique<AttachedSamplers>();
    if (!samplers->Open(channels, columns, error)) {
        return nullptr;
    }
    return samplers;
}

}  // namespace wavo::master
