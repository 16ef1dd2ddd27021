// Stands in for the platform's libm.so: floats pass in the same registers.
__asm__(
    ".symver platform_ceilf,ceilf@LIBC\n"
    ".pushsection .text\n.arm\n.globl platform_ceilf\n.type platform_ceilf, %function\n"
    "platform_ceilf: b ceilf\n.popsection");
