// nptests: renders the result documents of the nonparametric-tests engine.
#include "app/Options.h"
#include "app/Run.h"

int main(int argc, char** argv) {
    Options options;
    int exitCode = kExitOk;
    if (!ParseOptions(argc, argv, options, exitCode)) {
        return exitCode;
    }
    return Run(options);
}
