// Embeds the program's information record, information_record.kvdoc, in its own section. "a" puts
// the section into a loaded segment, where strip(1) leaves it; "R" keeps the linker from dropping
// it as unused. The build sets the path.
asm(".pushsection .quorvex_info,\"aR\",@progbits\n"
    ".balign 16\n"
    ".incbin \"" QUORVEX_INFORMATION_RECORD
    "\"\n"
    ".popsection\n");
