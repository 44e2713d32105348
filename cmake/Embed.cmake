# Writes the bytes of INPUT into OUTPUT as the constant array VARIABLE, its size beside it.
file(READ ${INPUT} bytes HEX)
string(REPEAT "." 32 line)
string(REGEX REPLACE "(${line})" "\\1\n" array "${bytes}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1, " array "${array}")
file(WRITE ${OUTPUT} "#include <cstddef>

namespace tarnel {

extern const unsigned char ${VARIABLE}[];
extern const std::size_t ${VARIABLE}_size;

const unsigned char ${VARIABLE}[] = {
${array}
};
const std::size_t ${VARIABLE}_size = sizeof(${VARIABLE});

} // namespace tarnel
")
