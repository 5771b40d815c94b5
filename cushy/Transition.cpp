#include "cushy/Transition.h"

#include "speclang/SpecExpression.h"

#include <cmath>
#include <numbers>

namespace tw {

namespace {

constexpr double degrees = std::numbers::pi / 180;

}  // namespace

std::optional<Transition> readTransition(const SpecMap& entry, const Transition& base, bool incoming) {
    const double baseTime = base.step == 0 ? 0 : base.period / (1000 * std::fabs(base.step));
    const double time = evaluateDouble(lookup(entry, "time"), baseTime);
    if (!(time > 0)) return std::nullopt;
    const double rate = evaluateDouble(lookup(entry, "updateRate"), 1000.0 / base.period);
    Transition t;
    const double period = std::floor(1000 / rate + 0.5);
    t.period = period >= 1 && period < 1e9 ? std::int32_t(period) : 1;
    t.step = (incoming ? 1 : -1) * t.period / (time * 1000);
    t.opacity = evaluateDouble(lookup(entry, "opacity"), base.opacity * 100) / 100;
    t.scale = evaluateDouble(lookup(entry, "scale"), base.scale * 100) / 100;
    const auto [x, y] = parsePair(lookup(entry, "offset"), {base.offsetX, base.offsetY});
    t.offsetX = x, t.offsetY = y;
    t.rotation = evaluateDouble(lookup(entry, "rotation"), base.rotation / degrees) * degrees;
    t.offsetCurve = evaluateDouble(lookup(entry, "offsetCurve"), base.offsetCurve);
    t.scaleCurve = evaluateDouble(lookup(entry, "scaleCurve"), base.scaleCurve);
    t.opacityCurve = evaluateDouble(lookup(entry, "opacityCurve"), base.opacityCurve);
    t.rotationCurve = evaluateDouble(lookup(entry, "rotationCurve"), base.rotationCurve);
    t.restart = toBool(lookup(entry, "restart"), base.restart);
    return t;
}

Transitions readTransitions(const std::string& raw) {
    Transitions out;
    const SpecMap block = parseMap(raw);
    std::optional<Transition> fallback;
    if (const auto d = block.find("default"); d != block.end()) fallback = readTransition(parseMap(d->second), Transition{}, true);
    const auto event = [&](const char* name, bool incoming) -> std::optional<Transition> {
        const auto found = block.find(name);
        if (found == block.end()) {
            if (!fallback) return std::nullopt;
            Transition copy = *fallback;
            copy.step = (incoming ? 1 : -1) * std::fabs(copy.step);
            return copy;
        }
        return readTransition(parseMap(found->second), fallback ? *fallback : Transition{}, incoming);
    };
    out.open = event("open", true);
    out.close = event("close", false);
    out.swapIn = event("swapIn", true);
    out.swapOut = event("swapOut", false);
    return out;
}

}  // namespace tw
