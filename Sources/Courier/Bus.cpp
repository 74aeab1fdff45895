#include "Courier/Bus.h"

#include "Courier/CourierText.h"

#include <cstdint>
#include <string_view>
#include <systemd/sd-bus.h>

namespace stemvault {

namespace {

constexpr std::uint64_t forever = UINT64_MAX;
constexpr std::uint8_t normalUrgency = 1;
constexpr int serversOwnTimeout = -1;

// How long each call to the notification service may take, in microseconds. The bus may have to
// start the service first.
constexpr std::uint64_t timeout = 5'000'000;

struct Unref {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, Unref>;

struct BusError {
    BusError() = default;
    BusError(const BusError&) = delete;
    BusError& operator=(const BusError&) = delete;
    ~BusError() { sd_bus_error_free(&error); }

    sd_bus_error error {};
};

Message makeCall(
    sd_bus* bus, const char* service, const char* path, const char* interface, const char* method)
{
    sd_bus_message* call = nullptr;
    sd_bus_message_new_method_call(bus, &call, service, path, interface, method);
    return Message(call);
}

bool appendTexts(sd_bus_message* call, const std::vector<std::string>& texts)
{
    if (sd_bus_message_open_container(call, 'a', "s") < 0)
        return false;
    for (const std::string& text : texts)
        if (sd_bus_message_append_basic(call, 's', text.c_str()) < 0)
            return false;
    return sd_bus_message_close_container(call) >= 0;
}

Message makeNotificationCall(sd_bus* bus, const char* method)
{
    return makeCall(bus, "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
        "org.freedesktop.Notifications", method);
}

bool hasText(sd_bus_message* reply, std::string_view wanted)
{
    if (sd_bus_message_enter_container(reply, 'a', "s") < 0)
        return false;
    const char* text = nullptr;
    while (sd_bus_message_read_basic(reply, 's', &text) > 0)
        if (text == wanted)
            return true;
    return false;
}

// A service that does not report its capabilities is assumed to read markup, as most do.
bool readsMarkup(sd_bus* bus)
{
    const Message call = makeNotificationCall(bus, "GetCapabilities");
    sd_bus_message* answer = nullptr;
    if (sd_bus_call(bus, call.get(), timeout, nullptr, &answer) < 0)
        return true;
    const Message reply(answer);
    return hasText(reply.get(), "body-markup");
}

std::string description(const sd_bus_error& error)
{
    if (sd_bus_error_has_name(&error, SD_BUS_ERROR_NO_REPLY) != 0)
        return "Stemvault Connect ended before it was done.";
    if (sd_bus_error_has_name(&error, SD_BUS_ERROR_INVALID_ARGS) != 0)
        return "This version of Stemvault Connect does not have that service.";
    return "Stemvault Connect is not running and could not be started.";
}

} // namespace

void Bus::Close::operator()(sd_bus* bus) const
{
    sd_bus_flush_close_unref(bus);
}

Result<Bus> Bus::open()
{
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0)
        return Failure { "Stemvault Connect can only be reached from a desktop session." };
    return Bus(Connection(bus));
}

Result<std::string> Bus::perform(
    const std::string& service, const std::vector<std::string>& uris) const
{
    const Message call = makeCall(connection.get(), "net.stemvault.Connect",
        "/net/stemvault/Connect/Services1", "net.stemvault.Connect.Services1", "Perform");
    if (!call || sd_bus_message_append_basic(call.get(), 's', service.c_str()) < 0
        || !appendTexts(call.get(), uris))
        return Failure { "The selection is too large." };

    BusError failure;
    sd_bus_message* answer = nullptr;
    const int status = sd_bus_call(connection.get(), call.get(), forever, &failure.error, &answer);
    const Message reply(answer);
    const char* text = nullptr;
    if (status < 0 || sd_bus_message_read_basic(reply.get(), 's', &text) < 0)
        return Failure { description(failure.error) };
    return std::string(text);
}

// Waits for the service's reply, because GNOME asks the bus for the sender of a notification and
// drops the notification if the sender has exited. GNOME also removes a notification with the hint
// "desktop-entry" when its sender exits, so that hint is not set.
void Bus::notify(const std::string& title, const std::string& body) const
{
    const std::string text = readsMarkup(connection.get()) ? escapedMarkup(body) : body;
    const Message call = makeNotificationCall(connection.get(), "Notify");
    if (!call)
        return;
    sd_bus_message_append(call.get(), "susssasa{sv}i", "Stemvault Connect", 0U,
        "net.stemvault.Connect", title.c_str(), text.c_str(), 0, 1, "urgency", "y", normalUrgency,
        serversOwnTimeout);
    sd_bus_call(connection.get(), call.get(), timeout, nullptr, nullptr);
}

} // namespace stemvault
