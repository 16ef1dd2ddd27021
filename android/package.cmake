# What a device gets is the stripped library; beside it lies the whole one, for
# symbolizing crash reports.
find_program(LLVM_STRIP NAMES llvm-strip llvm-strip-14 REQUIRED)
set(unstripped "${CMAKE_BINARY_DIR}/libtolvernvesko.unstripped.so")
add_custom_command(TARGET tolvernvesko POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E copy "$<TARGET_FILE:tolvernvesko>" "${unstripped}"
    COMMAND ${LLVM_STRIP} "$<TARGET_FILE:tolvernvesko>"
    BYPRODUCTS "${unstripped}" VERBATIM)
