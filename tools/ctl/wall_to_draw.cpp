#include "ctl/wall_to_draw.h"

#include "base/text.h"
#include "remote/selection.h"
#include "silence.h"

namespace ctl {

drawing::Wall wallToDraw(const outInf& wall, const std::string& console) {
    drawing::Wall drawn;
    for (const auto& [key, screen] : wall.screens) {
        drawing::Screen& one = drawn[{gridColumn(key), gridRow(key)}];
        one.name = withoutControls(screen.name.view());
        one.isHere = !console.empty() && screen.name.view().starts_with(console);
        for (const auto& [at, cell] : screen.cells) {
            const std::string name = withoutControls(cell.name.view());
            const tools::Silence silence;
            one.cells[{gridColumn(at), gridRow(at)}] = {
                name.substr(0, name.find('-')), static_cast<unsigned>(get_in_port(name.c_str()))};
        }
    }
    return drawn;
}

}  // namespace ctl
