#include "backends/x11/x11_owner_pids.h"

#include <cstdint>
#include <cstring>
#include <limits>

#include <xcb/res.h>

#include "backends/x11/x11_atoms.h"
#include "backends/x11/x11_connection.h"
#include "backends/x11/x11_property.h"

namespace brisko::platform::x11 {
namespace {

std::optional<std::int32_t> pidIn(const xcb_res_query_client_ids_reply_t* reply) {
    if (!reply) return std::nullopt;
    for (auto it = xcb_res_query_client_ids_ids_iterator(reply); it.rem; xcb_res_client_id_value_next(&it)) {
        if (!(it.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID)) continue;
        if (xcb_res_client_id_value_value_length(it.data) != 1) continue;
        std::int32_t pid = 0;
        std::memcpy(&pid, xcb_res_client_id_value_value(it.data), sizeof pid);
        return pid;
    }
    return std::nullopt;
}

std::vector<std::optional<std::int32_t>> claimedPids(xcb_connection_t* connection,
                                                     const std::vector<xcb_window_t>& windows) {
    const xcb_atom_t pidAtom = internAtoms(connection, {"_NET_WM_PID"})[0];
    std::vector<xcb_get_property_cookie_t> cookies;
    cookies.reserve(windows.size());
    for (const xcb_window_t w : windows) cookies.push_back(requestProperty(connection, w, pidAtom, XCB_ATOM_CARDINAL));
    std::vector<std::optional<std::int32_t>> pids;
    pids.reserve(windows.size());
    for (const auto cookie : cookies) {
        const std::optional<std::uint32_t> pid = cardinalIn(propertyReply(connection, cookie).get());
        pids.push_back(pid && *pid > 0 && *pid <= std::uint32_t(std::numeric_limits<std::int32_t>::max())
                           ? std::optional<std::int32_t>(std::int32_t(*pid))
                           : std::nullopt);
    }
    return pids;
}

}  // namespace

bool serverKnowsOwners(xcb_connection_t* connection) {
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_res_id);
    return extension && extension->present;
}

std::vector<std::optional<std::int32_t>> ownerPids(xcb_connection_t* connection,
                                                   const std::vector<xcb_window_t>& windows) {
    if (!serverKnowsOwners(connection)) return claimedPids(connection, windows);
    std::vector<xcb_res_query_client_ids_cookie_t> cookies;
    cookies.reserve(windows.size());
    for (const xcb_window_t w : windows) {
        const xcb_res_client_id_spec_t spec{w, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
        cookies.push_back(xcb_res_query_client_ids(connection, 1, &spec));
    }
    std::vector<std::optional<std::int32_t>> pids;
    pids.reserve(windows.size());
    for (const auto cookie : cookies) {
        const XcbReply<xcb_res_query_client_ids_reply_t> reply(
            xcb_res_query_client_ids_reply(connection, cookie, nullptr));
        pids.push_back(pidIn(reply.get()));
    }
    return pids;
}

}  // namespace brisko::platform::x11
