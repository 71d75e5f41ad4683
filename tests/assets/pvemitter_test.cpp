// Particle emitters without drawing: counts over time against rates, bursts
// and lifetimes, repeatable runs for a seed, the shared pool under pressure,
// and the log lines of descriptions the emitter cannot use.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "assets/pvemitter.h"
#include "support/glfixture.h"

namespace {

class Emitters : public pvtest::RecordingTest {
protected:
    void SetUp() override { ASSERT_TRUE(PVEMITTER::init(1000)); }
    void TearDown() override
    {
        PVNODE::cleanUp();
        PVEMITTER::free();
    }
};

// An emitter described by the body of an <emitter> element.
PVEMITTER* described(const std::string& attributes, const std::string& body)
{
    PVEMITTER* emitter = new PVEMITTER();
    const std::string text = "<emitter " + attributes + ">" + body + "</emitter>";
    EXPECT_TRUE(emitter->loadFromText(text.c_str(), "test")) << text;
    return emitter;
}

// Live particles after each frame of 1/8 s, as many frames as counts expected.
void expectCounts(const char* what, const std::string& attributes, const std::string& body,
                  const std::vector<int>& expected)
{
    PVEMITTER* emitter = described(attributes, body);
    std::vector<int> counts;
    while (counts.size() < expected.size()) {
        emitter->update(0.125f);
        counts.push_back(emitter->getNumberOfParticles());
    }
    EXPECT_EQ(expected, counts) << what;
    delete emitter;
}

TEST_F(Emitters, CountsFollowRatesBurstsAndLifetimes)
{
    expectCounts("steady rate", "particles='50'", "<emission rate='8'/><life min='1' max='1'/>",
                 {1, 2, 3, 4, 5, 6, 7, 8, 8, 8, 8});
    expectCounts("steady rate across its cycle ends", "particles='50'",
                 "<emission rate='8' duration='0.3'/><life min='1' max='1'/>", {1, 2, 3, 4, 5, 6, 7, 8, 8});
    expectCounts("capped by its maximum", "particles='10'", "<emission rate='100'/>", {10, 10, 10});
    expectCounts("one-shot burst", "",
                 "<emission rate='0' duration='0.5' loop='false'><burst time='0' count='20'/></emission>"
                 "<life min='0.5' max='0.5'/>",
                 {20, 20, 20, 20, 0, 0});
    expectCounts(
        "looping burst", "",
        "<emission rate='0' duration='0.25'><burst count='5'/></emission><life min='0.375' max='0.375'/>",
        {5, 5, 10, 5, 10, 5});
    EXPECT_EQ(PVEMITTER::getFreeParticles(), 1000u);
}

// Every particle as numbers, for whole-state comparisons.
std::vector<float> snapshot(const PVEMITTER& emitter)
{
    std::vector<float> state;
    for (int i = 0; i < emitter.getNumberOfParticles(); i++) {
        const PVPARTICLE* p = emitter.getParticle(i);
        state.insert(state.end(), {p->position.x, p->position.y, p->position.z, p->velocity.x, p->velocity.y,
                                   p->velocity.z, p->age, p->life});
    }
    return state;
}

TEST_F(Emitters, SameSeedAndFrameTimesGiveTheSameParticles)
{
    const std::string body = "<emission rate='37'/><life min='0.5' max='2'/><area x='1' y='0' z='1'/>"
                             "<velocity x='1' y='2' z='0' speedMin='1' speedMax='3' spread='25'/>"
                             "<acceleration x='0' y='-9.8' z='0'/>";
    PVEMITTER* first = described("seed='42'", body);
    PVEMITTER* second = described("seed='42'", body);
    PVEMITTER* other = described("seed='43'", body);
    const float frames[] = {0.016f, 0.033f, 0.1f, 0.007f, 0.25f, 0.05f, 0.016f};
    std::vector<float> firstRun;
    for (int run = 0; run < 2; run++) {  // reset replays the same particles
        for (PVEMITTER* e : {first, second, other})
            e->reset();
        for (float seconds : frames)
            for (PVEMITTER* e : {first, second, other})
                e->update(seconds);
        EXPECT_GT(first->getNumberOfParticles(), 10);
        EXPECT_EQ(snapshot(*first), snapshot(*second));
        EXPECT_NE(snapshot(*first), snapshot(*other));
        EXPECT_EQ(run ? firstRun : snapshot(*first), snapshot(*first));
        firstRun = snapshot(*first);
    }
    // Directions stay within the cone, speeds and lives within their ranges.
    for (int i = 0; i < first->getNumberOfParticles(); i++) {
        const PVPARTICLE* p = first->getParticle(i);
        const K3MVECTOR3D launch = p->velocity - K3MVECTOR3D(0.0f, -9.8f * p->age, 0.0f);
        const float speed = std::sqrt(launch % launch);
        EXPECT_GE(launch % K3MVECTOR3D(1.0f, 2.0f, 0.0f) / (speed * std::sqrt(5.0f)),
                  std::cos(0.4363f) - 1e-4f);
        EXPECT_TRUE(speed > 0.999f && speed < 3.001f && p->life >= 0.5f && p->life <= 2.0f) << speed;
    }
}

TEST_F(Emitters, StopPauseAndStartControlEmission)
{
    PVEMITTER* e = described("", "<emission rate='8'/><life min='1' max='1'/>");
    e->update(0.125f);
    e->update(0.125f);  // two born, 1/8 s apart
    e->pause();
    const std::vector<float> before = snapshot(*e);
    e->update(0.5f);
    EXPECT_EQ(snapshot(*e), before);
    e->start();
    e->stop();
    e->update(0.875f);  // the older dies, none born
    EXPECT_EQ(e->getNumberOfParticles(), 1);
    EXPECT_EQ(e->getState(), PV_EMITTER_STOPPED);
    e->start();
    e->update(0.125f);
    EXPECT_EQ(e->getNumberOfParticles(), 1);  // the last one dies as one is born
}

TEST_F(Emitters, PoolNeverOverflowsAndIsSharedFairly)
{
    PVEMITTER::free();
    ASSERT_TRUE(PVEMITTER::init(100));
    const std::string greedy = "<emission rate='10000'/><life min='1' max='1'/>";
    PVEMITTER* a = described("particles='1000'", greedy);
    for (int frame = 0; frame < 4; frame++)
        a->update(0.125f);
    EXPECT_EQ(a->getNumberOfParticles(), 100);
    EXPECT_EQ(log.text(), "   Emitter " + std::string(a->getName()) +
                              " loaded from test\n   [!] Particle pool exhausted by " + a->getName() +
                              " @ PVEMITTER::update\n");

    // Latecomers get their share as the first emitter's particles die.
    PVEMITTER* b = described("particles='1000'", greedy);
    PVEMITTER* c = described("particles='1000'", greedy);
    for (int frame = 0; frame < 8; frame++)
        for (PVEMITTER* e : {a, b, c})
            e->update(0.125f);
    for (PVEMITTER* e : {a, b, c})
        EXPECT_EQ(e->getNumberOfParticles(), 33);
    delete c;
    EXPECT_EQ(PVEMITTER::getFreeParticles(), 34u);
}

// Hostile descriptions in tests/data/emitter/, one per check; refusals.txt
// gives each file's log line (%s standing for the file's path).
TEST_F(Emitters, UnusableDescriptionsAreRefusedWithTheirLogLine)
{
    const std::string data = PEVRANO_TEST_DATA "/emitter/";
    std::istringstream refusals(pvtest::readFile(data + "refusals.txt"));
    log.fresh();
    int files = 0;
    for (std::string file, line; refusals >> file && std::getline(refusals, line); files++) {
        const std::string path = data + file;
        line.replace(line.find("%s"), 2, path);
        PVEMITTER emitter;
        EXPECT_FALSE(emitter.load(path.c_str()));
        EXPECT_EQ(log.fresh(), "   [!]" + line + " @ PVEMITTER::load\n");
        EXPECT_EQ(emitter.getDefinition().maxParticles, 100) << "the description is kept";
    }
    EXPECT_EQ(files, 17);
    PVEMITTER emitter;
    EXPECT_FALSE(emitter.load(nullptr));
    EXPECT_EQ(log.fresh(), "   [!] Invalid params @ PVEMITTER::load\n");
}

}  // namespace
