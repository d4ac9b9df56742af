/// @file
/// Helpers of the GLSL effect runtime's tests: containers that destroy themselves, a
/// message sink that captures while alive, loading an effect text in one call, and
/// expecting a load to fail with a given first message.
#pragma once

#include "nvFX/IContainerEx.h"
#include "nvFX/nvFX.h"

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace NvFXTest {

struct ContainerDestroy
{
    void operator()(nvFX::IContainer* container) const { nvFX::IContainer::destroy(container); }
};
using Container = std::unique_ptr<nvFX::IContainer, ContainerDestroy>;

/// Every message printed through nvFX::printf while alive, in order; the previous sink
/// is put back after.
class MessageCapture
{
public:
    MessageCapture()
    {
        m_previous = nvFX::setMessageSink([this](const char* message) {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_text += message;
        });
    }
    ~MessageCapture() { nvFX::setMessageSink(std::move(m_previous)); }
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;

    std::string text() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_text;
    }

private:
    mutable std::mutex m_mutex;
    std::string m_text;
    nvFX::MessageSink m_previous;
};

struct Loaded
{
    Container container;
    bool ok = false;
    std::string messages;
};

/// Loads `text` into a new container named `name`, capturing the load's messages.
inline Loaded Load(const std::string& text, const char* name = "effect")
{
    MessageCapture capture;
    Loaded loaded;
    loaded.container.reset(nvFX::IContainer::create(name));
    loaded.ok = nvFX::loadEffect(loaded.container.get(), text.c_str());
    loaded.messages = capture.text();
    return loaded;
}

/// Expects `text` to fail to load, the first line printed being `message`.
inline void ExpectFirstError(const std::string& text, const std::string& message)
{
    SCOPED_TRACE(text.substr(0, 200));
    const Loaded loaded = Load(text);
    EXPECT_FALSE(loaded.ok);
    EXPECT_EQ(loaded.messages.substr(0, loaded.messages.find('\n')), message) << loaded.messages.substr(0, 2000);
}

} // namespace NvFXTest
