#include "program/Run.h"

int main(int count, char** words) {
    return mv::host::RunProgram(
        std::vector<std::string>(words + (count > 0 ? 1 : 0), words + count));
}
