#include "UsersKeyboard.h"

#include <string_view>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

namespace tavaro {

UsersKeyboard::UsersKeyboard(TestClient& client) : client_(client) {
    auto& connection = client.connection();
    connection.ask<xcb_input_xi_query_version, xcb_input_xi_query_version_reply>(std::uint16_t{2}, std::uint16_t{2});
    auto const devices = connection.ask<xcb_input_xi_query_device, xcb_input_xi_query_device_reply>(
        xcb_input_device_id_t{XCB_INPUT_DEVICE_ALL});
    for (auto it = xcb_input_xi_query_device_infos_iterator(devices.get()); it.rem;
         xcb_input_xi_device_info_next(&it)) {
        std::string_view const name(xcb_input_xi_device_info_name(it.data), it.data->name_len);
        if (it.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD && name.find("XTEST") == name.npos)
            device_ = static_cast<std::uint8_t>(it.data->deviceid);
    }
}

void UsersKeyboard::key(std::string const& symbol, bool isPressed) {
    auto& connection = client_.connection();
    auto const type = connection.extension(xcb_input_id)->first_event +
                      (isPressed ? XCB_INPUT_DEVICE_KEY_PRESS : XCB_INPUT_DEVICE_KEY_RELEASE);
    xcb_test_fake_input(connection.get(), static_cast<std::uint8_t>(type), client_.codeOf(symbol), XCB_CURRENT_TIME,
                        XCB_NONE, 0, 0, device_);
    connection.synchronize();
}

}
