#include "faults/fault_seam.h"

namespace faults {

namespace {

struct State {
    bool armed = false;
    bool hit = false;
    int seen = 0;
    int depth = 0;
    Plan plan;
};
thread_local State state;
Site* first_site = nullptr;

void List(Site& site) {
    if (site.listed) return;
    site.listed = true;
    site.next = first_site;
    first_site = &site;
}

}  // namespace

const char* KindText(Kind kind) {
    return kind == Kind::Host ? "host call" : kind == Kind::System ? "system call" : "allocation";
}

std::string Plan::Text() const {
    std::string text =
        "call " + std::to_string(nth) + " of " +
        (site != nullptr ? std::string(site->name) : "any " + std::string(KindText(kind)));
    if (and_later) text += " and all later ones";
    if (site != nullptr && !site->codes.empty()) {
        text += ", code " + std::to_string(site->codes[choice]);
    }
    return text;
}

Armed::Armed(const Plan& plan) {
    for (Site* site = first_site; site != nullptr; site = site->next) site->calls = 0;
    state.plan = plan;
    state.seen = 0;
    state.hit = false;
    state.armed = true;
}

Armed::~Armed() {
    Disarm();
}

void Disarm() {
    state.armed = false;
}

bool WasHit() {
    return state.hit;
}
int CallsSeen() {
    return state.seen;
}
Site* FirstSite() {
    return first_site;
}

int Verdict(Site& site) {
    State& s = state;
    if (!s.armed || site.kind != s.plan.kind) return kGoOn;
    if (site.kind == Kind::Host && s.depth > 0) return kGoOn;
    List(site);
    ++site.calls;
    if (s.plan.site != nullptr && s.plan.site != &site) return kGoOn;
    ++s.seen;
    if (s.plan.nth == 0 || s.seen < s.plan.nth || (s.seen > s.plan.nth && !s.plan.and_later)) {
        return kGoOn;
    }
    s.hit = true;
    const std::size_t choice = s.plan.site != nullptr ? s.plan.choice : 0;
    return site.codes[choice];
}

InsideHost::InsideHost(const Site& site) : entered_(site.kind == Kind::Host) {
    if (entered_) ++state.depth;
}
InsideHost::~InsideHost() {
    if (entered_) --state.depth;
}

}  // namespace faults
