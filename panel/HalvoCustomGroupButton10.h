// One button of an exclusive group: a press hands the button's type to the controller, which
// decides which member of the group is on. The button never changes its own state.
#pragma once

#include "panel/HalvoCustomKickButton10.h"

class HalvoCustomGroupButton10 : public HalvoCustomKickButton10 {
public:
    using HalvoCustomKickButton10::HalvoCustomKickButton10;

    void mouseDown(const MouseEvent& event) override;
    // Releasing changes nothing: the selection was made on the press.
    void mouseUp(const MouseEvent&) override {}
};
