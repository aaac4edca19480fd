# zq_info_plist(TARGET FILE): compiles the information dictionary of a program into it, so that a program without a
# bundle of its own has an identity. An Info.plist that lies beside the program at run time goes first.
function(zq_info_plist target file)
    get_filename_component(plist ${file} ABSOLUTE)
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}_info_plist.cpp)
    file(CONFIGURE OUTPUT ${source} @ONLY CONTENT [[
asm(R"(
    .pushsection .rodata
    .global zq_info_plist_begin
    .type zq_info_plist_begin, %object
zq_info_plist_begin:
    .incbin "@plist@"
    .size zq_info_plist_begin, . - zq_info_plist_begin
    .global zq_info_plist_end
    .type zq_info_plist_end, %object
zq_info_plist_end:
    .byte 0
    .size zq_info_plist_end, 1
    .popsection
)");
]])
    set_source_files_properties(${source} PROPERTIES OBJECT_DEPENDS ${plist})
    target_sources(${target} PRIVATE ${source})
endfunction()
