#include "StartUp/FrameworkRunner.h"

// The demo application as one that has its configuration's signature checked.
int main(int argc, char** argv)
{
    return corvane::base::business::FrameworkRunner().exec(argc, argv, true);
}
