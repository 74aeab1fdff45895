#include "Courier/Bus.h"

#include <cstdint>
#include <systemd/sd-bus.h>

namespace stemvault {

namespace {

constexpr std::uint64_t forever = UINT64_MAX;
constexpr std::uint8_t normalUrgency = 1;
constexpr int serversOwnTimeout = -1;

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

void Bus::notify(const std::string& title, const std::string& body) const
{
    const Message call = makeCall(connection.get(), "org.freedesktop.Notifications",
        "/org/freedesktop/Notifications", "org.freedesktop.Notifications", "Notify");
    if (!call)
        return;
    sd_bus_message_append(call.get(), "susssasa{sv}i", "Stemvault Connect", 0U,
        "net.stemvault.Connect", title.c_str(), body.c_str(), 0, 2, "desktop-entry", "s",
        "net.stemvault.Connect", "urgency", "y", normalUrgency, serversOwnTimeout);
    sd_bus_message_set_expect_reply(call.get(), 0);
    sd_bus_send(connection.get(), call.get(), nullptr);
}

} // namespace stemvault
