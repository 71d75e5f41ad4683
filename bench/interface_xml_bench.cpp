// Loading an interface file of 200 widgets (20 windows of 9 widgets each,
// every widget with a name, position, size and a font or colour), against
// parsing the same file with the XML library alone (the floor, same run):
// the load benchmark reports its cost as a multiple of the floor.
#include <benchmark/benchmark.h>

#include <tinyxml.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>

#include <pevrano.h>

#include "benchengine.h"

namespace {

const char* interfaceFile = "bench-interface.xml";

std::string widget(const char* element, int index, const char* extra)
{
    const std::string n = std::to_string(index);
    return "<" + std::string(element) + "><name value=\"w" + n + "\"/><position x=\"" + n + "\" y=\"4\"/>" +
           "<size width=\"40\" height=\"16\"/>" + extra + "</" + element + ">\n";
}

void writeInterfaceFile()
{
    const char* kinds[] = {"button", "label", "text", "box", "vslider", "hslider", "button", "label"};
    std::string xml = "<?xml version=\"1.0\"?>\n<root>\n<font><name value=\"xmlbench\"/></font>\n";
    int count = 0;
    for (int w = 0; w < 20; w++) {
        std::string children;
        for (const char* kind : kinds)
            children += widget(kind, ++count,
                               "<usefont ref=\"xmlbench\"/><color r=\"1\" g=\"0.5\" b=\"0.5\" a=\"1\"/>");
        xml += widget("window", ++count,
                      ("<title value=\"Window\"/><write value=\"Some text\"/>" + children).c_str());
    }
    xml += "</root>\n";
    FILE* file = std::fopen(interfaceFile, "w");
    std::fwrite(xml.data(), 1, xml.size(), file);
    std::fclose(file);
}

void deleteTree(PVNODE* node)
{
    // Asking for a child of a leaf would log a warning: count them first.
    while (node->getNumberOfChildren() > 0) {
        PVNODE* child = node->getChild(0);
        child->unlink();
        deleteTree(child);
    }
    delete node;
}

void parseOnly()
{
    TiXmlDocument document;
    benchmark::DoNotOptimize(document.LoadFile(interfaceFile));
}

void BM_InterfaceXmlParseOnly(benchmark::State& state)
{
    writeInterfaceFile();
    for (auto _ : state)
        parseOnly();
}
BENCHMARK(BM_InterfaceXmlParseOnly)->Unit(benchmark::kMicrosecond);

void BM_InterfaceXmlLoad200Widgets(benchmark::State& state)
{
    if (!pvbench::engineStarted()) {
        state.SkipWithError("engine did not start");
        return;
    }
    writeInterfaceFile();
    // Processor time of the loads and of as many bare parses, for the ratio.
    std::clock_t loading = 0;
    for (auto _ : state) {
        const std::clock_t start = std::clock();
        PVNODE* root = PEVRANO::loadXML(interfaceFile);
        loading += std::clock() - start;
        state.PauseTiming();
        if (root)
            deleteTree(root);
        // Only the file's own font: the other benchmarks keep theirs.
        while (PVFONT* font = PVFONT::findByName("xmlbench"))
            delete font;
        state.ResumeTiming();
    }
    const std::clock_t start = std::clock();
    for (benchmark::IterationCount i = 0; i < state.iterations(); i++)
        parseOnly();
    const std::clock_t parsing = std::max<std::clock_t>(std::clock() - start, 1);
    state.counters["times_parse_only"] = double(loading) / double(parsing);
}
BENCHMARK(BM_InterfaceXmlLoad200Widgets)->Unit(benchmark::kMicrosecond);

}  // namespace
