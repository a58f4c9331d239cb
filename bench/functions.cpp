// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
// Single functions that every request goes through.

#include "protocol/Message.h"
#include "services/Envelope.h"
#include "services/XmlReader.h"
#include "util/LibUtils.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace
{

const std::string ipDocument = R"(<IPConfigurationSet From="bench" To="card1">
<Interface Name="ETH1" Mode="Static" Address="10.0.0.11" Netmask="255.255.255.0" Gateway="10.0.0.254"/>
<Interface Name="ETH2" Mode="Static" Address="10.0.1.11" Netmask="255.255.255.0" Gateway="10.0.1.254"/>
</IPConfigurationSet>)";

void swappingAHeader(benchmark::State& state)
{
    MessageHeader header{};
    for ([[maybe_unused]] auto _ : state) {
        swapHeaderWords(header);
        benchmark::DoNotOptimize(header);
    }
}

void swapping256Words(benchmark::State& state)
{
    std::vector<std::uint32_t> words(256);
    for ([[maybe_unused]] auto _ : state) {
        LibUtils::swapBytes32(words.data(), words.size());
        benchmark::DoNotOptimize(words.data());
        benchmark::ClobberMemory();
    }
}

void settingAReplysText(benchmark::State& state)
{
    const std::string text(400, 'x');
    std::array<char, 2048> buffer{};
    for ([[maybe_unused]] auto _ : state) {
        Message message;
        benchmark::DoNotOptimize(message.setText(buffer, text));
    }
}

void parsingAnEnvelope(benchmark::State& state)
{
    std::string from;
    std::string to;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(parseEnvelope(ipDocument, from, to));
    }
}

void readingADocument(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        XmlReader reader(ipDocument);
        while (reader.read() == 1) {
            benchmark::DoNotOptimize(reader.name());
        }
    }
}

void readingAFirstLine(benchmark::State& state)
{
    const std::string path = "bench_functions.line";
    std::ofstream(path) << "PART-1.2.3\n";
    std::string value;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(LibUtils::readFirstLine(value, path));
    }
    std::remove(path.c_str());
}

} // namespace

BENCHMARK(swappingAHeader)->Name("the header of a message swapped");
BENCHMARK(swapping256Words)->Name("256 words swapped");
BENCHMARK(settingAReplysText)->Name("a reply of 400 letters set");
BENCHMARK(parsingAnEnvelope)->Name("an envelope parsed");
BENCHMARK(readingADocument)->Name("a document read");
BENCHMARK(readingAFirstLine)->Name("a first line read");
BENCHMARK_MAIN();
