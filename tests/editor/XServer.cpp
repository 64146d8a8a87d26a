#include "tests/editor/XServer.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

extern char** environ;

namespace {

pid_t spawn(const std::vector<std::string>& argv, posix_spawn_file_actions_t* actions)
{
    std::vector<char*> args;
    for (const std::string& arg : argv)
        args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    pid_t pid = -1;
    if (posix_spawnp(&pid, args[0], actions, nullptr, args.data(), environ) != 0)
        return -1;
    return pid;
}

} // namespace

XServer::XServer()
{
    int fds[2];
    if (pipe(fds) != 0)
        return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addclose(&actions, fds[0]);
    // -displayfd makes the server choose a free display number and write it to us.
    pid = spawn({"Xvfb", "-displayfd", std::to_string(fds[1]), "-screen", "0", "800x600x24",
                 "-nolisten", "tcp", "-noreset"},
                &actions);
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    if (pid > 0) {
        char number[32] = {};
        size_t got = 0;
        while (got < sizeof number - 1) {
            const ssize_t n = read(fds[0], number + got, sizeof number - 1 - got);
            if (n <= 0)
                break;
            got += static_cast<size_t>(n);
            if (std::memchr(number, '\n', got))
                break;
        }
        if (got > 0) {
            display = ":" + std::string(number, std::strcspn(number, "\n"));
            setenv("DISPLAY", display.c_str(), 1);
        }
    }
    close(fds[0]);
}

XServer::~XServer()
{
    if (pid > 0) {
        kill(pid, SIGTERM);
        waitpid(pid, nullptr, 0);
    }
}

int runWhileServing(const std::vector<std::string>& argv, const std::function<void()>& whileWaiting)
{
    const pid_t pid = spawn(argv, nullptr);
    if (pid <= 0)
        return -1;
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) {
        whileWaiting();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::vector<uint32_t> Screenshot::area(int x, int y, int w, int h) const
{
    std::vector<uint32_t> result;
    const int top = height - (y + h);
    for (int row = top; row < top + h; ++row)
        for (int column = x; column < x + w; ++column)
            result.push_back(at(column, row));
    return result;
}

Screenshot screenshot(xcb_connection_t* connection, xcb_window_t window, int width, int height)
{
    Screenshot shot;
    xcb_get_image_reply_t* reply = xcb_get_image_reply(
        connection,
        xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, 0,
                      static_cast<uint16_t>(width), static_cast<uint16_t>(height), ~0u),
        nullptr);
    if (!reply)
        return shot;
    const auto* data = reinterpret_cast<const uint32_t*>(xcb_get_image_data(reply));
    const int length = xcb_get_image_data_length(reply) / 4;
    if (length >= width * height) {
        shot.width = width;
        shot.height = height;
        shot.pixels.assign(data, data + width * height);
    }
    free(reply);
    return shot;
}

ScreenPoint screenOrigin(xcb_connection_t* connection, xcb_window_t window)
{
    const xcb_setup_t* setup = xcb_get_setup(connection);
    const xcb_window_t root = xcb_setup_roots_iterator(setup).data->root;
    ScreenPoint point;
    xcb_translate_coordinates_reply_t* reply = xcb_translate_coordinates_reply(
        connection, xcb_translate_coordinates(connection, window, root, 0, 0), nullptr);
    if (reply) {
        point = {reply->dst_x, reply->dst_y};
        free(reply);
    }
    return point;
}
