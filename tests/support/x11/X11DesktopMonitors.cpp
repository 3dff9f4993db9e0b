// X11Desktop's RandR monitors, set through xrandr.
#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <stdexcept>

#include "platform/x11/XcbReply.h"
#include "x11/X11Desktop.h"

namespace gf::test {

void X11Desktop::setMonitors(const std::vector<Rect>& monitors, std::size_t primary) {
    xcb_connection_t* c = connection();
    auto resources = xcbReply(c, xcb_randr_get_screen_resources_current_reply,
                              xcb_randr_get_screen_resources_current(c, root()));
    if (!resources || xcb_randr_get_screen_resources_current_outputs_length(resources.get()) < 1) {
        throw std::runtime_error("the server has no RandR output");
    }
    const xcb_randr_output_t output =
        *xcb_randr_get_screen_resources_current_outputs(resources.get());
    auto outputInfo = xcbReply(c, xcb_randr_get_output_info_reply,
                               xcb_randr_get_output_info(c, output, resources->config_timestamp));
    if (!outputInfo) {
        throw std::runtime_error("cannot read the RandR output");
    }
    const std::string outputName(
        reinterpret_cast<const char*>(xcb_randr_get_output_info_name(outputInfo.get())),
        static_cast<std::size_t>(xcb_randr_get_output_info_name_length(outputInfo.get())));

    // libxcb-randr's SetMonitor request is malformed; the automatic monitor goes with its output.
    std::vector<std::string> arguments{"xrandr"};
    for (std::size_t i = 0; i < monitorsSet_; ++i) {
        arguments.insert(arguments.end(), {"--delmonitor", "GLIMMERFOLD-" + std::to_string(i)});
    }
    for (std::size_t i = 0; i < monitors.size(); ++i) {
        const Rect& m = monitors[i];
        auto pixels = [](double value) { return std::to_string(static_cast<int>(value)); };
        // Width/millimetres x height/millimetres + x + y, at about 96 dots per inch.
        const std::string geometry = pixels(m.width) + "/" + pixels(m.width / 4) + "x" +
                                     pixels(m.height) + "/" + pixels(m.height / 4) + "+" +
                                     pixels(m.x) + "+" + pixels(m.y);
        const std::string name =
            (i == primary ? "*" : "") + std::string("GLIMMERFOLD-") + std::to_string(i);
        arguments.insert(arguments.end(),
                         {"--setmonitor", name, geometry, i == 0 ? outputName : "none"});
    }
    ChildProcess::Options options;
    options.arguments = arguments;
    options.environment = clientEnvironment();
    options.outputFile = (directory_ / "xrandr.log").string();
    const std::string& log = options.outputFile;
    std::string error;
    auto xrandr = ChildProcess::start(options, &error);
    if (!xrandr) {
        throw std::runtime_error(error);
    }
    if (xrandr->waitForExit(std::chrono::seconds(5)) != 0) {
        throw std::runtime_error("xrandr failed:\n" + lastLines(log, 5));
    }
    monitorsSet_ = monitors.size();
    if (probe_->monitors().size() != monitors.size()) {
        throw std::runtime_error("the server lists other monitors than those set");
    }
}

}  // namespace gf::test
