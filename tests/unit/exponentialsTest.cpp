// The C library's exp, for every argument that noise can call it with: of all functions that the
// program takes from there, it is the only one that computes digits and need not round correctly.
//
// Noise's kernel takes exp(-2 / s) for its corners and exp(-1 / s) for its edges, where s is 2 *
// sigma^2. Sigma is the rounded mean of levels of which the highest that is counted is 127, and the
// indicator gives up when it is 0. A mean that is no number becomes -2^31; no block has that level,
// so that its kernel is made and not used.
//
// The expected values do not come from a C library. They are the arguments' exponentials to 60
// decimal digits, rounded once to the nearest double:
//
//   decimal.getcontext().prec = 60
//   for sigma in range(1, 128):
//     s = 2.0 * (sigma * sigma)
//     print([float(Fraction(Decimal(n / s).exp())).hex() for n in (-2.0, -1.0)])
//
// None lies closer than 0.002 units in the last place to the middle between two doubles.
#include <gtest/gtest.h>

#include <cmath>
#include <iterator>

namespace {

struct Exponentials {
  double corner;
  double edge;
};

// For sigma 1, 2, 3 and so on.
// clang-format off
constexpr Exponentials EXPECTED[] = {
    {0x1.78b56362cef38p-2, 0x1.368b2fc6f960ap-1},
    {0x1.8ebef9eac820bp-1, 0x1.c3d6a24ed8222p-1},
    {0x1.ca286101c9102p-1, 0x1.e454ccac9798ap-1},
    {0x1.e0fabfbc702a4p-1, 0x1.f03f56a88b5d8p-1},
    {0x1.ebec97e700b8dp-1, 0x1.f5dc99badec5bp-1},
    {0x1.f1f936ca50d7dp-1, 0x1.f8f023a2fec21p-1},
    {0x1.f5a82bf9bb4e2p-1, 0x1.facd54cf0ee63p-1},
    {0x1.f80feabfeefa5p-1, 0x1.fc03fd56aa225p-1},
    {0x1.f9b7c66001836p-1, 0x1.fcd967d762354p-1},
    {0x1.fae7cfd2b9cfep-1, 0x1.fd7246927d28bp-1},
    {0x1.fbc939669acf7p-1, 0x1.fde37f679c88ap-1},
    {0x1.fc74ee53f0c60p-1, 0x1.fe39ad97df6c6p-1},
    {0x1.fcfab7533d535p-1, 0x1.fe7cc93df8131p-1},
    {0x1.fd64f7e6ba76ap-1, 0x1.feb20f0c2df4bp-1},
    {0x1.fdbac01a3ca82p-1, 0x1.fedd0d62799f6p-1},
    {0x1.fe00ffaabffbcp-1, 0x1.ff003ff556aa9p-1},
    {0x1.fe3b3f57796e3p-1, 0x1.ff1d6d8a01af2p-1},
    {0x1.fe6c1497f0947p-1, 0x1.ff35e2674a2f8p-1},
    {0x1.fe956c0dc1d38p-1, 0x1.ff4a95e312b0ep-1},
    {0x1.feb8bab0b5bf7p-1, 0x1.ff5c4329d9dfdp-1},
    {0x1.fed71f0dd5fbdp-1, 0x1.ff6b79fc1c541p-1},
    {0x1.fef1783b2373bp-1, 0x1.ff78aa3aad035p-1},
    {0x1.ff0875fc9b77ep-1, 0x1.ff842c04f50aep-1},
    {0x1.ff1ca451016aep-1, 0x1.ff8e4586f709fp-1},
    {0x1.ff2e73d5e848dp-1, 0x1.ff972f305f634p-1},
    {0x1.ff3e3ff634549p-1, 0x1.ff9f16cf2be81p-1},
    {0x1.ff4c538705737p-1, 0x1.ffa621e0760f9p-1},
    {0x1.ff58ec436694fp-1, 0x1.ffac6f4fea4d5p-1},
    {0x1.ff643d74f50b0p-1, 0x1.ffb218cd4130ap-1},
    {0x1.ff6e7200b2516p-1, 0x1.ffb733d37a302p-1},
    {0x1.ff77adff7976fp-1, 0x1.ffbbd275ae562p-1},
    {0x1.ff800ffeaac00p-1, 0x1.ffc003ffd556bp-1},
    {0x1.ff87b1fdf8169p-1, 0x1.ffc3d575fe1abp-1},
    {0x1.ff8eaa39cb69bp-1, 0x1.ffc751f9bf72ap-1},
    {0x1.ff950bcdd62f4p-1, 0x1.ffca831bae39bp-1},
    {0x1.ff9ae7388123bp-1, 0x1.ffcd711d387c5p-1},
    {0x1.ffa04ac5dd021p-1, 0x1.ffd0232638e18p-1},
    {0x1.ffa542e7290f4p-1, 0x1.ffd29f70ced6ep-1},
    {0x1.ffa9da7adc77cp-1, 0x1.ffd4eb6d73834p-1},
    {0x1.ffae1b08408b9p-1, 0x1.ffd70be0d3a37p-1},
    {0x1.ffb20cf100921p-1, 0x1.ffd904fca1812p-1},
    {0x1.ffb5b79a9262ep-1, 0x1.ffdada745138ep-1},
    {0x1.ffb92190f71dfp-1, 0x1.ffdc8f8e7f73dp-1},
    {0x1.ffbc50a405f0bp-1, 0x1.ffde27339be58p-1},
    {0x1.ffbf4a003669cp-1, 0x1.ffdfa3fa52950p-1},
    {0x1.ffc21243b0646p-1, 0x1.ffe108321729dp-1},
    {0x1.ffc4ad90421e7p-1, 0x1.ffe255ec22af9p-1},
    {0x1.ffc71f9abf459p-1, 0x1.ffe38f0325574p-1},
    {0x1.ffc96bb834095p-1, 0x1.ffe4b521e1d4cp-1},
    {0x1.ffcb94e9442f9p-1, 0x1.ffe5c9c8de6c4p-1},
    {0x1.ffcd9de3fecc7p-1, 0x1.ffe6ce53500ecp-1},
    {0x1.ffcf891c62cfap-1, 0x1.ffe7c3fb5dabbp-1},
    {0x1.ffd158cbc67a1p-1, 0x1.ffe8abddd4ca7p-1},
    {0x1.ffd30ef74b8bfp-1, 0x1.ffe986fd645c7p-1},
    {0x1.ffd4ad7583366p-1, 0x1.ffea56456f524p-1},
    {0x1.ffd635f35f45dp-1, 0x1.ffeb1a8c85b63p-1},
    {0x1.ffd7a9f889611p-1, 0x1.ffebd49690bb0p-1},
    {0x1.ffd90aeb35651p-1, 0x1.ffec8516bc49cp-1},
    {0x1.ffda5a1380b8cp-1, 0x1.ffed2cb126fc0p-1},
    {0x1.ffdb989e6dcbep-1, 0x1.ffedcbfc6020fp-1},
    {0x1.ffdcc7a088bb8p-1, 0x1.ffee6382ba4abp-1},
    {0x1.ffdde81840388p-1, 0x1.ffeef3c377f45p-1},
    {0x1.ffdefaeffc392p-1, 0x1.ffef7d33d7064p-1},
    {0x1.ffe000fffaaacp-1, 0x1.fff0003fff555p-1},
    {0x1.ffe0fb0ff9387p-1, 0x1.fff07d4bd7a63p-1},
    {0x1.ffe1e9d8b2451p-1, 0x1.fff0f4b3c446ep-1},
    {0x1.ffe2ce0532689p-1, 0x1.fff166cd51e62p-1},
    {0x1.ffe3a8340b0aep-1, 0x1.fff1d3e7cef60p-1},
    {0x1.ffe478f866214p-1, 0x1.fff23c4cd59d7p-1},
    {0x1.ffe540dafe8dbp-1, 0x1.fff2a040c7f81p-1},
    {0x1.ffe6005b002fbp-1, 0x1.fff30003402cfp-1},
    {0x1.ffe6b7eed2550p-1, 0x1.fff35bcf75b3bp-1},
    {0x1.ffe76804cee50p-1, 0x1.fff3b3dc98f4dp-1},
    {0x1.ffe81103e8574p-1, 0x1.fff4085e264f0p-1},
    {0x1.ffe8b34c4048cp-1, 0x1.fff45984316a4p-1},
    {0x1.ffe94f37b04b0p-1, 0x1.fff4a77ba9a6dp-1},
    {0x1.ffe9e51a46589p-1, 0x1.fff4f26e985e9p-1},
    {0x1.ffea7542b631fp-1, 0x1.fff53a845998dp-1},
    {0x1.ffeafffac0bfap-1, 0x1.fff57fe1cfc15p-1},
    {0x1.ffeb85879277bp-1, 0x1.fff5c2a992df2p-1},
    {0x1.ffec062a19a86p-1, 0x1.fff602fc1bbe8p-1},
    {0x1.ffec821f5570fp-1, 0x1.fff640f7eb70dp-1},
    {0x1.ffecf9a09e1c4p-1, 0x1.fff67cb9af7d7p-1},
    {0x1.ffed6ce3e77d4p-1, 0x1.fff6b65c6312bp-1},
    {0x1.ffeddc1bfddd3p-1, 0x1.fff6edf96d7fdp-1},
    {0x1.ffee4778bdfb8p-1, 0x1.fff723a8be373p-1},
    {0x1.ffeeaf274893dp-1, 0x1.fff75780e693cp-1},
    {0x1.ffef135231d01p-1, 0x1.fff789973193ap-1},
    {0x1.ffef7421ad05ep-1, 0x1.fff7b9ffb9b8dp-1},
    {0x1.ffefd1bbb5110p-1, 0x1.fff7e8cd7d37fp-1},
    {0x1.fff02c443198dp-1, 0x1.fff81612709c6p-1},
    {0x1.fff083dd1982bp-1, 0x1.fff841df9002cp-1},
    {0x1.fff0d8a692d18p-1, 0x1.fff86c44ef09fp-1},
    {0x1.fff12abf1027fp-1, 0x1.fff89551c7950p-1},
    {0x1.fff17a436c21dp-1, 0x1.fff8bd1487793p-1},
    {0x1.fff1c74f02b14p-1, 0x1.fff8e39add2d1p-1},
    {0x1.fff211fbc8aa1p-1, 0x1.fff908f1c38f3p-1},
    {0x1.fff25a6261a0cp-1, 0x1.fff92d258cd64p-1},
    {0x1.fff2a09a343fbp-1, 0x1.fff95041ecbc4p-1},
    {0x1.fff2e4b97d31dp-1, 0x1.fff9725201f4ap-1},
    {0x1.fff326d560bf9p-1, 0x1.fff993605efb2p-1},
    {0x1.fff36701fb379p-1, 0x1.fff9b3771248ap-1},
    {0x1.fff3a552703bfp-1, 0x1.fff9d29fadfa4p-1},
    {0x1.fff3e1d8f9086p-1, 0x1.fff9f0e34ef50p-1},
    {0x1.fff41ca6f1c6ap-1, 0x1.fffa0e4aa3903p-1},
    {0x1.fff455cce6023p-1, 0x1.fffa2addf1cf9p-1},
    {0x1.fff48d5a9c4cdp-1, 0x1.fffa46a51d361p-1},
    {0x1.fff4c35f21227p-1, 0x1.fffa61a7ac382p-1},
    {0x1.fff4f7e8d11b4p-1, 0x1.fffa7beccd54bp-1},
    {0x1.fff52b0562781p-1, 0x1.fffa957b5bdbep-1},
    {0x1.fff55cc1ee15ap-1, 0x1.fffaae59e468fp-1},
    {0x1.fff58d2af7d15p-1, 0x1.fffac68ea9146p-1},
    {0x1.fff5bc4c7668fp-1, 0x1.fffade1fa564bp-1},
    {0x1.fff5ea31dadffp-1, 0x1.fffaf51292009p-1},
    {0x1.fff616e617715p-1, 0x1.fffb0b6ce8284p-1},
    {0x1.fff64273a6172p-1, 0x1.fffb2133e4f9bp-1},
    {0x1.fff66ce48eae6p-1, 0x1.fffb366c8c821p-1},
    {0x1.fff696426cbdap-1, 0x1.fffb4b1baca1bp-1},
    {0x1.fff6be9674e5cp-1, 0x1.fffb5f45dfc45p-1},
    {0x1.fff6e5e97a010p-1, 0x1.fffb72ef8f70dp-1},
    {0x1.fff70c43f1f74p-1, 0x1.fffb861cf6b37p-1},
    {0x1.fff731adfa4b4p-1, 0x1.fffb98d224647p-1},
    {0x1.fff7562f5c65ap-1, 0x1.fffbab12fd4dbp-1},
    {0x1.fff779cf91a2cp-1, 0x1.fffbbce33e31dp-1},
    {0x1.fff79c95c725fp-1, 0x1.fffbce467db5dp-1},
    {0x1.fff7be88e1774p-1, 0x1.fffbdf402e2fep-1},
    {0x1.fff7dfaf7fedcp-1, 0x1.fffbefd39f5cbp-1},
};
// clang-format on
static_assert(std::size(EXPECTED) == 127);

// As noise calls it. The compiler cannot compute it in advance, as it could for a known argument.
double exponential(double numerator, double sigma) {
  const double s = 2.0 * (sigma * sigma);
  const volatile double argument = numerator / s;
  return std::exp(argument);
}

}  // namespace

TEST(Exponentials, areCorrectlyRounded_forEverySigmaOfNoise) {
  double sigma = 0.0;
  for (const Exponentials& expected : EXPECTED) {
    sigma += 1.0;
    EXPECT_EQ(exponential(-2.0, sigma), expected.corner) << "sigma " << sigma;
    EXPECT_EQ(exponential(-1.0, sigma), expected.edge) << "sigma " << sigma;
  }
}

TEST(Exponentials, areOne_withoutALevel) {
  // 1 - 2^-62 and 1 - 2^-63 are rounded to 1.
  EXPECT_EQ(exponential(-2.0, -2147483648.0), 1.0);
  EXPECT_EQ(exponential(-1.0, -2147483648.0), 1.0);
}
