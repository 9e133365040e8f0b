/* Not a declaration's comment: a blank line follows. */

/* Inverts; channel picks the elements. */
EFFECTS_API int32_t EFFECTS_CALL SampleInvert32(int32_t elementCount, Pixel32* pixels, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL SampleInvert128(int32_t elementCount, Pixel128* pixels, int32_t channel);
/* Layer onto canvas. */
EFFECTS_API int32_t EFFECTS_CALL Sample32Place(int32_t width, int32_t height, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight, uint32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL SampleRows_64(int32_t width, int32_t height, const Pixel64* source, uint16_t* rgb48, float* histogram, float* scratch, uint8_t* mystery); /* width * 4 * height elements */
EFFECTS_API int32_t EFFECTS_CALL SampleSave(const char* fileName, int32_t width, int32_t height, const Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL SampleDraw(void* hdc, void* hbmTarget, double amount);
#if !defined(_WIN32)
EFFECTS_API void EFFECTS_CALL SampleSeed(uint32_t seed);
#endif
