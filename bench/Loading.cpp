// kx7text benchmarks - how long the tables of a double-byte converter take to build, both directions together.
#include <benchmark/benchmark.h>

#include "kx7/charset/Converters.h"
#include "kx7/tables/ByteTypeTables.h"
#include "kx7/tables/MappingLists.h"

namespace {

/** Makes, loads and destroys a converter; making and destroying are a small part. */
template <class Converter, class... Arguments>
void add(char const* name, Arguments... arguments)
{
    benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
        for (auto step : state) {
            (void)step;
            Converter converter(arguments...);
            converter.load();
            benchmark::ClobberMemory();
        }
    });
}

}  // namespace

int main(int argc, char** argv)
{
    add<KX7CharSetConverterDBCS>("load/932", oCP932map, oCP932Type, KX7CS_WCP932);
    add<KX7CharSetConverterDBCS>("load/936", oCP936map, oCP936Type, KX7CS_WCP936);
    add<KX7CharSetConverterDBCS>("load/949", oCP949map, oCP949Type, KX7CS_WCP949);
    add<KX7CharSetConverterDBCS>("load/950", oCP950map, oCP950Type, KX7CS_WCP950);
    add<KX7CharSetConverterDBCSEx>("load/sjis2004", oSJIS0213_2004map, oCP932Type, KX7CS_SJIS0213);
    add<KX7CharSetConverterEUC_CN_KR>("load/euckr", oKSX1001map, KX7CS_EUC_KR);
    add<KX7CharSetConverterEUC_JP>("load/eucjp", oJIS0208map, oJIS0201map, oJIS0212map, KX7CS_EUC_JP);
    add<KX7CharSetConverterGB18030>("load/gb18030", oGBKmap, KX7CS_GB18030);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
