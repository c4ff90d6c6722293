#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <random>
#include <set>
#include <string>
#include <string_view>

#include "life/judge.h"
#include "rig/world.h"

namespace life {

/// The world in which a person lives: the usual wall and a touch panel.
rig::Plan plan(bool releaseEverything);

/// Somebody at the console, and everybody who gives it orders: types, moves, drags, crosses edges,
/// plugs and unplugs, opens menus, all at random. Until it is told that no key ever stays down, the
/// daemon keeps some on purpose, and this person does not do what leads there: no quick taps, and
/// no order while something is held. One thread.
class Person {
 public:
    struct Options {
        unsigned seed = 0;
        bool releaseEverything = false;
        bool faults = false;      ///< boxes fall silent, the daemon is held up, datagrams are junk
        Milliseconds longest{0};  ///< between two things that are done
    };
    Person(rig::World& world, Judge& judge, const Options& options);

    /// Does one thing.
    void act();

    /// Plugs or unplugs something.
    void plug();

    /// Lets go of everything, brings the wall back to what it was at the start, and looks: nothing
    /// is down anywhere, and each of six keys arrives once, at one box. What is wrong; empty when
    /// nothing is.
    std::string settle();

    std::uint64_t acts() const { return acts_; }
    /// What was done last, one a line.
    std::string past() const;

 private:
    void did(std::string_view what);
    int upTo(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
    void rest();
    void order(const std::string& text);
    void hold(int device, std::uint16_t code);
    void release(int device, std::uint16_t code);
    void releaseAll();
    void touch(std::uint16_t code, int value);
    bool isTooSoon(std::uint16_t modifier);

    void type();
    void chord();
    void move();
    void cross();
    void drag();
    void useTouch();
    void useMenus();
    void arrange();
    void changeBoxes();
    void fail();
    bool isServed();
    bool bringBack();
    std::string waitUntilServed();
    std::string prove();

    rig::World& world_;
    Judge& judge_;
    Options options_;
    std::mt19937 random_;
    std::map<int, std::set<std::uint16_t>> held_;  ///< keys and buttons, by device
    std::map<std::uint16_t, Clock::time_point> lastTap_;
    std::set<int> plugged_;
    std::uint64_t acts_ = 0;
    int marks_ = 0;
    std::deque<std::string> past_;
};

}  // namespace life
