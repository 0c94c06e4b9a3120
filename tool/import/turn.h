/// Taking turns at what the engine does for one at a time only.
#pragma once

namespace zmfb::tool {

/// While it lives, every other process of the run that wants one waits: of two who make or drop tables at the
/// same time, until they commit, the engine refuses one. Throws Failure when the tool is to end.
class Turn {
  public:
    Turn();
    ~Turn();
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    /// From now on turns are taken by locks on that file, which this process and others share.
    static void take_by(int descriptor);
};

}  // namespace zmfb::tool
