// The sample's print file byte for byte, as FORMAT.md has it: written down apart from the code, so
// that writer and reader cannot change together.
#ifndef TESTS_NUVFILE_SAMPLE_BYTES_H_
#define TESTS_NUVFILE_SAMPLE_BYTES_H_

namespace nuvfile {

// Hexadecimal.
inline constexpr char kSampleBytes[] =
    "894e55560d0a1a0a"                                  // magic
    "01000000"                                          // version
    "0b000000"                                          // number of sections
    "0702000000000000"                                  // size of the file, 519
    "0700000000000000"                                  // number of data lines
    "00000000"                                          // reserved
    "7e3051af"                                          // checksum
    "4d41434821717d6130010000000000001100000000000000"  // MACH: checksum, offset 304, length 17
    "50524f4a1ace609f41010000000000000900000000000000"  // PROJ: checksum, offset 321, length 9
    "4d41544cad02db084a010000000000000a00000000000000"  // MATL: checksum, offset 330, length 10
    "414b45597fddd08354010000000000000600000000000000"  // AKEY: checksum, offset 340, length 6
    "4c3130317178e8155a010000000000000300000000000000"  // L101: checksum, offset 346, length 3
    "4c3130326fdfb9065d010000000000000100000000000000"  // L102: checksum, offset 349, length 1
    "4c3130338b29907d5e010000000000000200000000000000"  // L103: checksum, offset 350, length 2
    "50524556a409077a60010000000000000800000000000000"  // PREV: checksum, offset 352, length 8
    "44415441b6d92aaa68010000000000002a00000000000000"  // DATA: checksum, offset 360, length 42
    "494e445887e7273992010000000000004000000000000000"  // INDX: checksum, offset 402, length 64
    "415247539a78e1ead2010000000000003500000000000000"  // ARGS: checksum, offset 466, length 53
    "334450534e4b4734335754573030303031"                // MACH
    "70726f6a6563742d37"                                // PROJ
    "726573696e2067726579"                              // MATL
    "00010203feff"                                      // AKEY
    "610062"                                            // L101
    "63"                                                // L102
    "6465"                                              // L103
    "89504e470d0a1a0a"                                  // PREV
    "4c30206669727374463120626567696e73207769746820612064696769744641"  // DATA
    "316c617374206c696e65"
    "0000000000000000"  // INDX
    "0800000000000000"
    "0800000000000000"
    "0900000000000000"
    "1e00000000000000"
    "2100000000000000"
    "2a00000000000000"
    "2a00000000000000"
    "6a6f625f6e616d653d63726f776e3d6c6566740a6c617965725f746869636b6e"  // ARGS
    "6573735f6d6d3d302e30350a6c61796572733d370a";

}  // namespace nuvfile

#endif  // TESTS_NUVFILE_SAMPLE_BYTES_H_
