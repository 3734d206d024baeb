#import <kivo/objc/KivoSDK.h>
#import <kivo/objc/ZorFrameworkWrapper.h>

@implementation ZorFrameworkWrapper

@synthesize apiProvider = _apiProvider;
@synthesize config = _config;

- (nullable KivoAPIProvider*)load:(NSString*)key version:(NSString*)version {
    self.apiProvider = [KivoSDK loadForProviderWithKey:key version:version];
    return self.apiProvider;
}

- (void)dealloc {
    [_apiProvider release];
    [_config release];
    [super dealloc];
}

@end
