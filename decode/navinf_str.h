/*
 * One navigation string of one satellite, as cut out of a satellite block
 * of message 0x0C: a GLONASS standard-accuracy (CT) string, a GLONASS
 * high-accuracy (VT) string, a GLONASS L3 string or a GPS subframe. The
 * string's code is checked on the way in; afterwards it keeps the
 * information bits, its number and the receive time.
 */
#ifndef ZELNAV_NAVINF_STR_H
#define ZELNAV_NAVINF_STR_H

/* String kinds of createFromx0c / check. */
enum {
    NAVSTR_GLO_CT = 0, /* 10 bytes kept, number 1..15 */
    NAVSTR_GLO_VT = 1, /* 7 bytes, number 1..10 */
    NAVSTR_GLO_L3 = 2, /* 37 bytes, type 1..5 */
    NAVSTR_GPS = 3     /* 30 bytes, subframe ID 0..5 */
};

/* Flags OR-ed in by the Hamming checks. */
enum {
    HEM_CHECKBIT = 1,   /* single error in a check bit, data intact */
    HEM_BADPOS = 2,     /* error position beyond the string */
    HEM_CORRECTED = 8,  /* one information bit inverted in place */
    HEM_REJECTED = 128  /* uncorrectable */
};

class NavInfStr_t {
public:
    NavInfStr_t();
    ~NavInfStr_t();
    NavInfStr_t(const NavInfStr_t&) = delete;
    NavInfStr_t& operator=(const NavInfStr_t& src);

    /* Takes the string of `kind` out of the satellite block `blk` (the
     * block's first byte) and stamps it with `tm`. False when the block
     * carries no such string or it fails its check (the CT check may still
     * have corrected a bit in `blk`). */
    bool createFromx0c(int kind, unsigned char* blk, unsigned int tm);
    /* Loads raw bytes without any code check (kinds 0 and 3). */
    bool check(int kind, const unsigned char* bytes);

    unsigned int getNum() const;
    unsigned int getTmResived() const;
    unsigned char* getData() const;
    unsigned int getLData() const;
    unsigned char getSvid() const;
    bool isCmplt() const { return valid != 0; }
    void clear() { valid = 0; }

    /* Bit-field extraction; `sign` makes the top bit a sign-magnitude sign. */
    static double GetValue(const unsigned char* data, int pos, int len,
                           bool sign, double scale);
    /* GLONASS CT strings, `pos` being the interface-document bit number of
     * the field's least significant bit (9..85) within the 10 kept bytes:
     * string bit b lies in byte 9 - (b - 9) / 8 at bit (b - 9) % 8, so the
     * walk goes down the bytes as the bit numbers rise. Bits below 9 (the
     * check bits, not kept) and above 88 read as 0. */
    static double GetValueCT(const unsigned char* data, int pos, int len,
                             bool sign, double scale);
    static double GetValueVT(const unsigned char* data, int pos, int len,
                             bool sign, double scale);
    /* L3 strings, stored first-transmitted bit first (bit 7 of byte 0),
     * the bits numbered 300 downward from there. A field whose least
     * significant bit is numbered `pos` starts, most significant bit
     * first, at bit index 301 - (pos + len) counted from 0 at bit 7 of
     * byte 0. Bits before the string or past its status byte (the 38th)
     * read as 0. */
    static double GetValueL3(const unsigned char* data, int pos, int len,
                             bool sign, double scale);
    /* Rounds half away from zero. */
    static int Round(double x);

    /* Code checks. The CT and VT checks correct one information bit in
     * place in `str` and OR HEM_* flags into `*flags`. */
    static unsigned char calcHemGloCt(const unsigned char* str,
                                      const unsigned char* positions,
                                      int count, unsigned char initial);
    static bool ishemOkGloCt(unsigned char* str, unsigned char* flags,
                             bool correct);
    static unsigned char calcHemGloVt(const unsigned char* rev,
                                      const unsigned char* positions,
                                      int count, unsigned char initial);
    static bool ishemOkGloVt(unsigned char* str, unsigned char* flags,
                             bool correct);
    static bool ishemOkGpsCt(const unsigned char* blk);
    static bool ishemOkGloL3(const unsigned char* str);

private:
    /* Inline rather than separately allocated: strings are built on the
     * stack for every block, and an epoch must not allocate. */
    unsigned char data[40];
    unsigned char valid;
    unsigned int num;
    unsigned int lData;
    unsigned int tmResived;
};

#endif
