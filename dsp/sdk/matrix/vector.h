/* SPDX-License-Identifier: MIT */
/* qel: single-precision audio vector library. The two vector records and every
   exported function.

   Conventions that hold for every function below unless its line says otherwise:
   - Plain calls, no state, no error reporting; counts and indices are trusted.
   - "count X" names the one place the element count comes from; every other
     record's dim is neither read nor written, its arrays must be long enough.
   - "in place: C=A" means the output may be the very same array(s) as that
     input; any other overlap is unsupported.
   - Elements are processed in ascending index order; all arithmetic is single
     precision. Comparisons are strict; the line says who wins ties and NaNs.
   - Nothing allocates except the init, resize and clone functions. */
#ifndef QEL_VECTOR_H
#define QEL_VECTOR_H

#include "../utils/os_support.h"
#include "../utils/qel_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Real vector: dim elements at data. */
typedef struct {
  int dim;
  qel_float* data;
} qel_flt_vec;

/* Complex vector in split storage: element k is re[k] + i*im[k]. */
typedef struct {
  int dim;
  qel_float* re;
  qel_float* im;
} qel_cpx_vec;

/* ---- Lifecycle: the only functions that allocate or release ---- */

/* New owning vector of len zeros: record, then re, then im (len*4 bytes each). */
qel_cpx_vec* qel_cpx_vec_init(int len);
/* New owning vector of len zeros: record, then data. */
qel_flt_vec* qel_flt_vec_init(int len);
/* Releases im, re, then the record. Owning vectors only. */
void qel_cpx_vec_free(qel_cpx_vec* v);
/* Releases data, then the record. Owning vectors only. */
void qel_flt_vec_free(qel_flt_vec* v);
/* New vector of dim elements: v's leading elements, zeros after; v is released. */
qel_cpx_vec* qel_cpx_vec_resize(qel_cpx_vec* v, int dim);
/* New vector of dim elements: v's leading elements, zeros after; v is released. */
qel_flt_vec* qel_flt_vec_resize(qel_flt_vec* v, int dim);
/* New owning copy of v (of any kind); v unchanged. */
qel_cpx_vec* qel_cpx_vec_clone(const qel_cpx_vec* v);
/* New owning copy of v (of any kind); v unchanged. */
qel_flt_vec* qel_flt_vec_clone(const qel_flt_vec* v);

/* ---- Fill, copy and views ---- */

/* A[k] = a + i*b; count A->dim. */
void qel_cpx_vec_set(qel_cpx_vec* A, qel_float a, qel_float b);
/* A[k] = a; count A->dim. */
void qel_flt_vec_set(qel_flt_vec* A, qel_float a);
/* data[k] = a; count len. */
void qel_short_vec_set(int16_t* data, int16_t a, int len);
/* B = A; count B->dim; skipped when the arrays are the same pointer. */
void qel_flt_vec_copy(const qel_flt_vec* A, qel_flt_vec* B);
/* B = A; count B->dim; re and im each skipped when that array is shared. */
void qel_cpx_vec_copy(const qel_cpx_vec* A, qel_cpx_vec* B);
/* B[k] = A[k] for k = start..end inclusive; nothing when end <= start or shared. */
void qel_flt_vec_copy_subvec(const qel_flt_vec* A, int start, int end, qel_flt_vec* B);
/* B[k] = A[k] for k = start..end inclusive, re then im; nothing when end <= start. */
void qel_cpx_vec_copy_subvec(const qel_cpx_vec* A, int start, int end, qel_cpx_vec* B);
/* out = view of v[start..end]: dim end-start+1, pointers into v. out may be v. */
void qel_cpx_vec_get_subvec(const qel_cpx_vec* v, int start, int end, qel_cpx_vec* out);
/* out = view of v[start..end]: dim end-start+1, pointer into v. out may be v. */
void qel_flt_vec_get_subvec(const qel_flt_vec* v, int start, int end, qel_flt_vec* out);

/* ---- Scaling and affine updates ---- */

/* y[i] = x[i] * gain; count len; in place: y=x. */
void qel_fl_mul_scale(qel_float* y, const qel_float* x, qel_float gain, int len);
/* A *= scale, whole re then whole im; count A->dim. */
void qel_cpx_vec_scale(qel_cpx_vec* A, qel_float scale);
/* B = A * scale, whole re then whole im; count A->dim; in place: B=A. */
void qel_cpx_vec_scale2(const qel_cpx_vec* A, qel_float scale, qel_cpx_vec* B);
/* A *= scale; count A->dim. */
void qel_flt_vec_scale(qel_flt_vec* A, qel_float scale);
/* B = A * scale; count A->dim; in place: B=A. */
void qel_flt_vec_scale2(const qel_flt_vec* A, qel_float scale, qel_flt_vec* B);
/* A[i] *= v_scale[i]; count A->dim; v_scale may be A. */
void qel_flt_vec_pairwise_scale(qel_flt_vec* A, const qel_flt_vec* v_scale);
/* A[i] += B[i] * scale, re then im per element; count A->dim; B may be A. */
void qel_cpx_vec_pairwise_bias(qel_cpx_vec* A, const qel_cpx_vec* B, qel_float scale);
/* A[i] += B[i] * scale; count A->dim; B may be A. */
void qel_flt_vec_pairwise_bias(qel_flt_vec* A, const qel_flt_vec* B, qel_float scale);
/* A[i] = A[i] * scale + B[i] per part; count A->dim; B=A gives a*scale + a. */
void qel_cpx_vec_scale_add(qel_cpx_vec* A, qel_float scale, const qel_cpx_vec* B);
/* A[i] = A[i] * scale (stored), then A[i] += B[i]; count A->dim; B=A gives 2*(a*scale). */
void qel_flt_vec_scale_add(qel_flt_vec* A, qel_float scale, const qel_flt_vec* B);
/* y[i] = x[i] * g_i, g_0 = gain, g_{i+1} = g_i + step (running sum); count len; y=x ok. */
void qel_fl_mul_step(qel_float* y, const qel_float* x, qel_float gain, qel_float step, int len);

/* ---- Addition and subtraction with floors ---- */

/* C[i] = A[i] + B[i]; count len; in place: C=A or C=B. */
void qel_fl_add(const qel_float* A, const qel_float* B, qel_float* C, int len);
/* C = A + B; count A->dim; in place: C=A or C=B. */
void qel_flt_vec_add(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C);
/* C = A + B per part; count A->dim; in place: C=A or C=B. */
void qel_cpx_vec_add(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
/* A[i] += b; count A->dim. */
void qel_flt_vec_add_flt(qel_flt_vec* A, qel_float b);
/* C = A - B per part, whole re then whole im; count A->dim; in place: C=A or C=B. */
void qel_cpx_vec_subtract(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
/* C = A - B; count A->dim; in place: C=A or C=B. */
void qel_flt_vec_subtract(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C);
/* s = A[i] + B[i]; C[i] = (m > s) ? m : s (ties and NaNs keep s); count len; C=A or C=B ok. */
void qel_fl_add_max(const qel_float* A, const qel_float* B, qel_float* C, qel_float m, int len);
/* C = A + B floored at min as qel_fl_add_max; count A->dim. */
void qel_flt_vec_add_max(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C, qel_float min);
/* B[i] = (c > A[i]) ? c : A[i] (ties and NaNs keep A[i]); count len; B may be A. */
void qel_fl_max(const qel_float* A, qel_float* B, qel_float c, int len);
/* B[i] = A[i] - b, floored at min as qel_fl_max; count A->dim; B may be A. */
void qel_flt_vec_subtract_max(const qel_flt_vec* A, qel_float b, qel_flt_vec* B, qel_float min);
/* C[i] = alpha - A[i] (stored), then lowered to B[i] if strictly greater;
   count A->dim; B sharing C's data gives no limit; C may be A. */
void qel_flt_vec_subtract_min(const qel_flt_vec* A, const qel_flt_vec* B, qel_float alpha,
                              qel_flt_vec* C);

/* ---- Minimum, maximum and clipping ---- */

/* C[i] = A[i] if power(A[i]) < power(B[i]), else B[i] (B wins ties, NaNs); count A->dim. */
void qel_cpx_vec_min(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
/* C[i] = A[i] if power(A[i]) > power(B[i]), else B[i] (B wins ties, NaNs); count A->dim. */
void qel_cpx_vec_max(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
/* C[i] = (A[i] < B[i]) ? A[i] : B[i]; count A->dim; C may be A or B. */
void qel_flt_vec_min(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C);
/* C[i] = (A[i] > B[i]) ? A[i] : B[i]; count A->dim; C may be A or B. */
void qel_flt_vec_max(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C);
/* B[i] = (A[i] > threshold) ? A[i] : threshold; count A->dim; B may be A. */
void qel_flt_vec_max_value(const qel_flt_vec* A, qel_float threshold, qel_flt_vec* B);
/* If re^2 + im^2 < max_abs_value^2: A[i] = max_abs_value + 0i; count A->dim. */
void qel_cpx_vec_max_value(qel_cpx_vec* A, qel_float max_abs_value);
/* If A[i] > threshold: A[i] = threshold + (A[i] - threshold) * B[i]; count A->dim; B may be A. */
void qel_flt_vec_smooth(qel_flt_vec* A, const qel_flt_vec* B, qel_float threshold);

/* ---- Element-wise products ---- */

/* C = A * B; count C->dim; in place: C=A or C=B. */
void qel_cpx_vec_dot_product(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
/* C = A * conj(B); count C->dim; in place: C=A or C=B. */
void qel_cpx_vec_dot_product_conj(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
/* C += A * conj(B), the product added as one term; count A->dim; C may be A or B. */
void qel_cpx_vec_dot_product_maddc_conj(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
/* C = A * B (real gain per bin), re pass then im pass; count C->dim; C may be A, B not C->re. */
void qel_cpx_vec_dot_product_flt(const qel_cpx_vec* A, const qel_flt_vec* B, qel_cpx_vec* C);
/* C = A * B; count A->dim; in place: C=A or C=B. */
void qel_flt_vec_dot_product(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C);
/* B = conj(A): re copied bit for bit, im sign bit flipped; count A->dim; B may be A. */
void qel_cpx_vec_conj(const qel_cpx_vec* A, qel_cpx_vec* B);

/* ---- Element-wise division ---- */

/* C = A / (alpha + B); zero d -> A/1e-8 in groups of 4, A*1e8 in the tail; count A->dim. */
void qel_flt_vec_ratio_flt(const qel_flt_vec* A, const qel_flt_vec* B, qel_float alpha,
                           qel_flt_vec* C);
/* C = A / B; zero B -> A/1e-8 in groups of 4, A*1e8 in the tail; count A->dim. */
void qel_flt_vec_dot_division(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C);
/* C = A / B (real denominator for both parts), guarded as above; count A->dim. */
void qel_cpx_vec_dot_division_flt(const qel_cpx_vec* A, const qel_flt_vec* B, qel_cpx_vec* C);
/* C.re = A.re / B.re, C.im = A.im / B.im, each zero part -> /1e-8; count A->dim. */
void qel_cpx_vec_dot_division(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
/* Zero B[i] is first replaced by 1e-8 in B itself; then C[i] = A[i] / B[i]; count len. */
void qel_fl_division(const qel_float* A, qel_float* B, qel_float* C, int len);

/* ---- Magnitude and power ---- */

/* B[k] = re^2 + im^2; count A->dim; B->data may be A->re or A->im. */
void qel_cpx_vec_power(const qel_cpx_vec* A, qel_flt_vec* B);
/* B[k] = qel_sqrtf(re^2 + im^2); count A->dim; B->data may be A->re or A->im. */
void qel_cpx_vec_abs(const qel_cpx_vec* A, qel_flt_vec* B);
/* Sum of powers: each group of 4 summed left to right, then added to one running sum. */
qel_float qel_cpx_vec_power_sum(const qel_cpx_vec* A);
/* Same as qel_cpx_vec_power_sum over elements start..start+num-1, groups from start. */
qel_float qel_cpx_vec_power_sum_part(const qel_cpx_vec* A, int start, int num);
/* re + i*im = sum of A[k]*B[k] (no conjugate), kept running in the outputs; count A->dim. */
void qel_cpx_vec_inner_product(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_float* re,
                               qel_float* im);
/* A[j] = qel_powf(A[j], alpha * B[j]), a NaN result stored as +0; count A->dim; B may be A. */
void qel_flt_vec_powf(qel_flt_vec* A, const qel_flt_vec* B, qel_float alpha);

/* ---- Sums, variance and peak ---- */

/* Sum of x[offset..offset+len-1]: each group of 8 summed left to right, then added
   to one running sum; the remainder added one by one. */
qel_float qel_fl_sum(const qel_float* x, int offset, int len);
/* qel_fl_sum(A->data, 0, A->dim). */
qel_float qel_flt_vec_sum(const qel_flt_vec* A);
/* qel_fl_sum(A->data, start, num). */
qel_float qel_flt_vec_sum_part(const qel_flt_vec* A, int start, int num);
/* Two-pass sample variance, divisor dim - 1; 0 for dim 1. */
qel_float qel_flt_vec_var(const qel_flt_vec* A);
/* Largest |x[i]|, never below +0; NaNs are passed over. */
qel_float qel_fl_abs_max(const qel_float* x, int len);

/* ---- PCM conversion ---- */

/* out[k] = in[k] * 2^-15; count len; in place only with in in the upper half of out. */
void qel_vec_normalize(const int16* in, qel_float* out, int len);
/* out[k] = in[k] * 32768 saturated to 16 bits, truncated; NaN -> 0; out may alias in. */
void qel_vec_denormalize(const qel_float* in, int16* out, int len);
/* out[k] = in[k] * 2^-23 (no masking, no clamping); count len; out may alias in. */
void qel_vec_normalize24(const int32* in, qel_float* out, int len);
/* out[k] = in[k] * 8388608 saturated to 24 bits, truncated; NaN -> 0; out may alias in. */
void qel_vec_denormalize24(const qel_float* in, int32* out, int len);

/* ---- Delay line and windowed accumulation ---- */

/* Per sample: out[i] = gain[i] * delay[p]; delay[p] = in[i]; p wraps at delay_len.
   p starts at delay_write_index; the caller advances it by in_len mod delay_len. */
void qel_fl_circular(qel_float* out, qel_float* delay, const qel_float* in, const qel_float* gain,
                     int delay_len, int delay_write_index, int in_len);
/* fft_data[k] += buff[k] * window[-k]; window points at the weight of element 0. */
void qel_fl_maa(qel_float* fft_data, const qel_float* buff, const qel_float* window, int nfft);

/* ---- FIR filters over caller-owned state ----
   pState: numTaps-1 history samples (oldest first), then a working area for the
   samples a call appends. pCoeffs[0] weighs the oldest sample of a window, so it
   holds the impulse response time-reversed. pDst may be pSrc. */

/* blockSize outputs; pState holds numTaps-1+blockSize floats. */
void qel_flt_fir(const float* pSrc, float* pDst, float* pState, const float* pCoeffs, int numTaps,
                 int blockSize);
/* blockSize/M outputs aligned on inputs 0, M, 2M...; leftover blockSize mod M inputs ignored. */
void qel_flt_fir_decimate(const float* pSrc, float* pDst, float* pState, const float* pCoeffs,
                          int numTaps, int M, int blockSize);
/* As qel_flt_fir_decimate on raw PCM values; outputs through float_to_int16. */
void qel_flt_fir_decimate_int16(const int16* pSrc, int16* pDst, float* pState, const float* pCoeffs,
                                int numTaps, int M, int blockSize);
/* L*blockSize outputs of the filter over the input with L-1 zeros after each sample. */
void qel_flt_fir_interpolate(const float* pSrc, float* pDst, float* pState, const float* pCoeffs,
                             int numTaps, int L, int blockSize);
/* As qel_flt_fir_interpolate on raw PCM values; outputs through float_to_int16. */
void qel_flt_fir_interpolate_int16(const int16* pSrc, int16* pDst, float* pState,
                                   const float* pCoeffs, int numTaps, int L, int blockSize);

/* ---- Console dumps through bk_printf ----
   Every print is a pair: the value's format, then "\n". Two "\n" before every
   line_num-th element and two after the last. The 2 forms print the same
   whatever Q is. */

void qel_flt_vec_dump(const qel_flt_vec* m, int line_num);
void qel_flt_vec_dump2(const qel_flt_vec* m, int line_num, int Q);
void qel_fl_dump(const qel_float* m, int len, int line_num);
void qel_fl_dump2(const qel_float* m, int len, int line_num, int Q);
void qel_short_dump(const short int* m, int len, int line_num);
void qel_cpx_vec_dump(const qel_cpx_vec* m, int line_num);
void qel_cpx_vec_dump2(const qel_cpx_vec* m, int line_num, int Q);

#ifdef __cplusplus
}
#endif

#endif /* QEL_VECTOR_H */
