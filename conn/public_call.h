/// The calls of programs, told apart from those that methods make of one another.
#pragma once

namespace zmfb::conn {

/// One call of a program, while it lives. A call made within another (by an error block, a driver) belongs to
/// it.
class PublicCall {
  public:
    PublicCall() {
        if (depth_++ == 0) ++number_;
    }
    ~PublicCall() { --depth_; }
    PublicCall(const PublicCall&) = delete;
    PublicCall& operator=(const PublicCall&) = delete;

    /// The number of the call that is under way, or of the last one.
    static unsigned long number() { return number_; }

  private:
    static inline unsigned depth_ = 0;
    static inline unsigned long number_ = 0;
};

}  // namespace zmfb::conn
